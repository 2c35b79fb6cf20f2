// Records in callers' memory: changing their size or layout breaks existing binaries.

#include <type_traits>

#include <ko/filesystem.hpp>

#if defined(__GLIBCXX__) && defined(__LP64__)
namespace ko::filesystem {

static_assert(sizeof(FsysExceptionBase) == 112 && sizeof(PathNotFound) == 112);
static_assert(sizeof(SystemError) == 112 && sizeof(InvalidArgument) == 176);
static_assert(sizeof(file_status) == 40 && sizeof(file_status_light) == 24);
static_assert(sizeof(space_info) == 24 && sizeof(rename_options) == 2);
static_assert(sizeof(directory_entry) == 152);
static_assert(sizeof(directory_iterator) == 8 && sizeof(recursive_directory_iterator) == 8);
static_assert(sizeof(upath) == 40 && sizeof(detail::pathname_elements) == 128);
static_assert(std::is_same_v<std::underlying_type_t<copy_option>, unsigned int>);

}  // namespace ko::filesystem
#endif

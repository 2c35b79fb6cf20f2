#include <ko/filesystem/posix/directory_maker.hpp>

#include <sys/stat.h>

#include <cerrno>
#include <cstddef>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/posix/file_identity.hpp>

namespace ko::filesystem::detail {

int make_directory(char const* path8) noexcept {
    errno = 0;
    return ::mkdir(path8, 0775) == 0 ? 0 : errno;
}

namespace {

/// Makes every directory above `path8`, from the first. `accepts` says for a failure and the
/// directory whether to go on.
template <class Accepts>
void make_directories_above(std::string& path8, Accepts accepts) {
    for (std::size_t end = path8.find('/', 1); end != path8.npos; end = path8.find('/', end + 1)) {
        path8[end] = '\0';  // the prefix, in place
        int const error = make_directory(path8.c_str());
        if (error != 0 && !accepts(error, path8.c_str()))
            throw_errno_exception(error, path8.c_str());
        path8[end] = '/';
    }
}

}  // namespace

void make_directories(std::string path8) {
    // Anything that exists is accepted, even a file: the next step reports that.
    make_directories_above(path8, [](int error, char const*) { return error == EEXIST; });
    int const error = make_directory(path8.c_str());
    if (error != 0) throw_errno_exception(error, path8);
}

bool ensure_directories_at(std::string path8) {
    // In most cases it exists, or its parent does.
    if (leads_to_directory(path8.c_str())) return false;
    if (make_directory(path8.c_str()) == 0) return true;
    make_directories_above(path8, [](int error, char const* part8) {
        // For an existing directory, the error may also be EROFS or EACCES, for example.
        return error == EEXIST || leads_to_directory(part8);
    });
    int const error = make_directory(path8.c_str());
    if (error != 0 && !leads_to_directory(path8.c_str())) throw_errno_exception(error, path8);
    return error == 0;
}

}  // namespace ko::filesystem::detail

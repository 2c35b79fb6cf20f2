#include <ko/filesystem/posix/link_maker.hpp>

#include <unistd.h>

#include <cerrno>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/exceptions/path_errors.hpp>
#include <ko/filesystem/exceptions/throw.hpp>
#include <ko/filesystem/file_status.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/status_reader.hpp>

namespace ko::filesystem::detail {

void make_link(std::u16string const& target, std::u16string const& link, unsigned int type) {
    reject_empty_path(target);
    reject_empty_path(link);
    if (type != file_status::file_type_auto && type != file_status::regular_file &&
        type != file_status::directory_file)
        throw_invalid_argument("Unsupported file type");
    std::string const target8 = system_path(target);
    std::string const link8 = system_path(link);
    // Deliberately without the path, unlike what symlink reports of a dangling link there.
    if (exists_by_stat(link8)) throw_cloneable(FileExistsError({}));
    // The target comes first in the report: it is the text that was to be stored.
    if (::symlink(target8.c_str(), link8.c_str()) != 0)
        throw_errno_exception(errno, target8, link8);
}

}  // namespace ko::filesystem::detail

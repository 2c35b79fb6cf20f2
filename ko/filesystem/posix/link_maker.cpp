#include <ko/filesystem/posix/link_maker.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/exceptions/path_errors.hpp>
#include <ko/filesystem/exceptions/throw.hpp>
#include <ko/filesystem/file_status.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/status_reader.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem::detail {

namespace {

/// Makes the link by `call`, whose first argument is the target.
void make_by(int (*call)(char const*, char const*), std::u16string const& target,
             std::u16string const& link) {
    system_path const target8(target);
    system_path const link8(link);
    // Deliberately without the path, unlike for a dangling link, which the call reports.
    if (exists_by_stat(link8.c_str())) throw cloneable(FileExistsError({}));
    // The target comes first in the report, since it is what was to be stored or linked.
    if (call(target8.c_str(), link8.c_str()) != 0)
        throw_errno_exception(errno, target8.c_str(), link8.c_str());
}

}  // namespace

void make_link(std::u16string const& target, std::u16string const& link, unsigned int type) {
    reject_empty_path(target);
    reject_empty_path(link);
    if (type != file_status::file_type_auto && type != file_status::regular_file &&
        type != file_status::directory_file)
        throw_invalid_argument("Unsupported file type");
    make_by(&::symlink, target, link);
}

void make_hard_link(std::u16string const& existing, std::u16string const& link) {
    reject_empty_path(existing);
    reject_empty_path(link);
    auto const without_following = [](char const* existing8, char const* link8) {
        return ::linkat(AT_FDCWD, existing8, AT_FDCWD, link8, 0);
    };
    make_by(without_following, existing, link);
}

}  // namespace ko::filesystem::detail

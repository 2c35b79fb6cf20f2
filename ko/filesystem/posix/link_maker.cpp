#include <ko/filesystem/posix/link_maker.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/exceptions/throw.hpp>
#include <ko/filesystem/file_status.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/status_reader.hpp>
#include <ko/filesystem/posix/system_call.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem::detail {

namespace {

/// Makes the link by `call`, whose first argument is the target.
void make_by(int (*call)(char const*, char const*), char const* target8, char const* link8) {
    // Deliberately without the path, unlike for a dangling link, which the call reports.
    if (exists_by_stat(link8)) throw_errno_exception(EEXIST, {});
    // Some systems make a link with an empty text.
    int const error = *target8 == '\0' ? ENOENT : errno_of(call(target8, link8));
    // The target comes first in the report, since it is what was to be stored or linked.
    if (error != 0) throw_errno_exception(error, target8, link8);
}

}  // namespace

void make_link(std::u16string const& target, std::u16string const& link, unsigned int type) {
    reject_empty_path(target);
    reject_empty_path(link);
    if (type != file_status::file_type_auto && type != file_status::regular_file &&
        type != file_status::directory_file)
        throw_invalid_argument("Unsupported file type");
    system_path const target8(target);
    make_link_at(target8.c_str(), system_path(link).c_str());
}

void make_link_at(char const* target8, char const* link8) { make_by(&::symlink, target8, link8); }

void make_hard_link(std::u16string const& existing, std::u16string const& link) {
    reject_empty_path(existing);
    reject_empty_path(link);
    auto const without_following = [](char const* existing8, char const* link8) {
        return ::linkat(AT_FDCWD, existing8, AT_FDCWD, link8, 0);
    };
    system_path const existing8(existing);
    make_by(without_following, existing8.c_str(), system_path(link).c_str());
}

}  // namespace ko::filesystem::detail

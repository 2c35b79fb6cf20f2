#include <ko/filesystem/access.hpp>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include <boost/bind/bind.hpp>
#include <boost/function.hpp>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/exceptions/throw.hpp>
#include <ko/filesystem/file_status.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/status_reader.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem {

namespace {

using detail::native_text;

constexpr unsigned int access_all = access_exists | access_read | access_write | access_execute;

constexpr unsigned int attributes = file_status::archive_file | file_status::system_file |
                                    file_status::hidden_file | file_status::non_indexed_file;

/// Bit by bit, since POSIX has read and write the other way round.
int posix_mode(unsigned int mode) noexcept {
    int posix = F_OK;
    if ((mode & access_read) != 0) posix |= R_OK;
    if ((mode & access_write) != 0) posix |= W_OK;
    if ((mode & access_execute) != 0) posix |= X_OK;
    return posix;
}

bool access_impl(std::u16string const& native, unsigned int mode) {
    detail::reject_empty_path(native);
    if (mode == 0 || mode > access_all) detail::throw_invalid_argument("Unsupported Access Mode");
    detail::system_path const path8(native);
    if (::access(path8.c_str(), posix_mode(mode)) == 0) return true;

    int const error = errno;
    bool const asks_for_existence = (mode & access_exists) != 0;
    // With access_exists, unreachable is an error and missing is false; without it, the reverse.
    struct stat found;
    if (error == EACCES && (!asks_for_existence || ::stat(path8.c_str(), &found) == 0))
        return false;
    if (error == ENOENT && asks_for_existence) return false;
    if (error == EROFS && (mode & access_write) != 0) return false;
    detail::throw_errno_exception(error, path8.c_str());
}

unsigned int changed_permissions(unsigned int present, unsigned int perms) noexcept {
    unsigned int const requested = perms & file_status::perms_mask & ~attributes;
    if ((perms & file_status::perms_add) != 0) return present | requested;
    if ((perms & file_status::perms_remove) != 0) return present & ~requested;
    return requested;
}

void permissions_impl(std::u16string const& native, unsigned int perms) {
    constexpr unsigned int both = file_status::perms_add | file_status::perms_remove;
    detail::reject_empty_path(native);
    if ((perms & both) == both ||
        (perms & file_status::perms_unknown) == file_status::perms_unknown)
        detail::throw_invalid_argument("File Permission not valid");
    detail::system_path const path8(native);
    bool const link_itself = (perms & file_status::perms_symlink) != 0;
    // A missing path is not a failure here: the change reports it, with the path.
    file_status const present = detail::status_from_stat(
        boost::bind(link_itself ? &::lstat : &::stat, path8.c_str(), boost::placeholders::_1));
    auto const change =
        link_itself && present.type == file_status::symlink_file ? &::lchmod : &::chmod;
    auto const mode = static_cast<mode_t>(changed_permissions(present.permissions, perms));
    if (change(path8.c_str(), mode) != 0) detail::throw_errno_exception(errno, path8.c_str());
}

}  // namespace

bool access(upath const& p, unsigned int mode) { return access_impl(native_text(p), mode); }
bool access(std::u16string const& p, unsigned int mode) {
    return access_impl(native_text(p), mode);
}

void permissions(upath const& p, unsigned int perms) { permissions_impl(native_text(p), perms); }
void permissions(std::u16string const& p, unsigned int perms) {
    permissions_impl(native_text(p), perms);
}

}  // namespace ko::filesystem

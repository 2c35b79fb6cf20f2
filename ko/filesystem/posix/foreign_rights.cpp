#include <ko/filesystem/posix/foreign_rights.hpp>

#include <cerrno>

#include <ko/filesystem/posix/system_call.hpp>

namespace ko::filesystem::detail {

int drop_foreign_rights(struct stat const& source, struct stat const& copy,
                        char const* copy8) noexcept {
    bool const is_foreign = source.st_uid != copy.st_uid || source.st_gid != copy.st_gid;
    if (!is_foreign || (copy.st_mode & set_id_bits) == 0) return 0;
    mode_t const kept = copy.st_mode & 07777 & ~set_id_bits;
    return errno_of(::chmod(copy8, kept));
}

}  // namespace ko::filesystem::detail

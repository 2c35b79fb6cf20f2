// Internal: not installed.
#pragma once

#include <sys/stat.h>

namespace ko::filesystem::detail {

inline constexpr mode_t set_id_bits = S_ISUID | S_ISGID;

/// Clears the set-uid and set-gid bits of the regular file `copy8`, whose status is `copy`, if its
/// owner or group differs from that of `source`: otherwise whoever runs it would get the rights of
/// the user who copied it. Returns the error number of a failure, or 0.
int drop_foreign_rights(struct stat const& source, struct stat const& copy,
                        char const* copy8) noexcept;

}  // namespace ko::filesystem::detail

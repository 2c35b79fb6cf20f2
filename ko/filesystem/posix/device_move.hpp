// Internal: not installed.
#pragma once

#include <string>

namespace ko::filesystem::detail {

/// Moves `from8` to `to8` on another file system by copying and removing, as documented at
/// `rename`. Returns the error number of the failed step, or 0; the source is then whole, and the
/// copy on the disk.
/// Throws
///   std::filesystem::filesystem_error if times can't be preserved
///   the class of the error number if the source can't be removed; path(): the entry that stays,
///   arguments(): `to8`
int move_across_devices(std::string const& from8, std::string const& to8,
                        bool preserve_last_write_time);

}  // namespace ko::filesystem::detail

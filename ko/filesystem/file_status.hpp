#pragma once

#include <cstdint>

#include <boost/date_time/posix_time/ptime.hpp>

namespace ko::filesystem {

/// The result of `status` and `symlink_status`. By default `file_not_found`.
///
/// Times are in UTC with microseconds, rounded down from the system's nanoseconds; a time that 64
/// bits of microseconds can't hold is one of Date_Time's infinities.
struct file_status {
    // Types. The system has no type `file_not_found`; `file_type_auto` is an argument only.
    static constexpr std::uint32_t file_not_found = 0xFFFF0000;
    static constexpr std::uint32_t file_type_mask = 0xF000;
    static constexpr std::uint32_t file_type_unknown = 0x0;
    static constexpr std::uint32_t file_type_auto = 0x1;
    static constexpr std::uint32_t regular_file = 0x8000;
    static constexpr std::uint32_t directory_file = 0x4000;
    static constexpr std::uint32_t symlink_file = 0xA000;
    static constexpr std::uint32_t block_file = 0x6000;
    static constexpr std::uint32_t character_file = 0x2000;
    static constexpr std::uint32_t fifo_file = 0x1000;
    static constexpr std::uint32_t socket_file = 0xC000;
    static constexpr std::uint32_t reparse_file = 0xE000;  ///< on other platforms

    // Permissions.
    static constexpr std::uint32_t no_perms = 0x0;
    static constexpr std::uint32_t perms_all = 0x1FF;
    static constexpr std::uint32_t owner_read = 0x100;
    static constexpr std::uint32_t owner_write = 0x80;
    static constexpr std::uint32_t owner_exec = 0x40;
    static constexpr std::uint32_t owner_all = 0x1C0;
    static constexpr std::uint32_t group_read = 0x20;
    static constexpr std::uint32_t group_write = 0x10;
    static constexpr std::uint32_t group_exec = 0x8;
    static constexpr std::uint32_t group_all = 0x38;
    static constexpr std::uint32_t others_read = 0x4;
    static constexpr std::uint32_t others_write = 0x2;
    static constexpr std::uint32_t others_exec = 0x1;
    static constexpr std::uint32_t others_all = 0x7;
    static constexpr std::uint32_t set_uid_on_exec = 0x800;
    static constexpr std::uint32_t set_gid_on_exec = 0x400;
    static constexpr std::uint32_t sticky_bit = 0x200;
    static constexpr std::uint32_t perms_mask = 0xFFFF;
    static constexpr std::uint32_t perms_unknown = 0xFFFF;

    // Modifiers for `permissions`.
    static constexpr std::uint32_t perms_add = 0x10000;
    static constexpr std::uint32_t perms_remove = 0x20000;
    static constexpr std::uint32_t perms_symlink = 0x40000;

    // Attributes on other platforms; their values overlap those of the types.
    static constexpr std::uint32_t archive_file = 0x1000;
    static constexpr std::uint32_t system_file = 0x2000;
    static constexpr std::uint32_t hidden_file = 0x4000;
    static constexpr std::uint32_t non_indexed_file = 0x8000;

    std::uint32_t type = file_not_found;
    std::uint32_t permissions = no_perms;  ///< the twelve low bits of the mode
    boost::posix_time::ptime last_access_time;
    boost::posix_time::ptime last_write_time;
    boost::posix_time::ptime last_status_change_time;
    std::uint64_t size = 0;  ///< in bytes; the length of the text for a link
};

/// The result of `status_express_light`. By default `file_not_found`.
struct file_status_light {
    /// The type bits of the system's mode, untranslated: 0xE000 stays 0xE000 here and is
    /// `file_type_unknown` in `file_status`. Or `file_status::file_not_found`.
    std::uint32_t type = file_status::file_not_found;
    boost::posix_time::ptime last_write_time;
    std::uint64_t size = 0;  ///< in bytes
};

}  // namespace ko::filesystem

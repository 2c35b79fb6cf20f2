#pragma once

#include <cstdint>

namespace ko::filesystem {

/// What `copy` and `copy_file` do; combined with |. `copy_symlinks` and `skip_symlinks`
/// exclude each other, and so do `overwrite_if_exists`, `skip_existing` and `update_existing`.
enum class copy_option : unsigned int {
    none = 0,                 ///< an existing destination is an error, but for `copy_directory`
    overwrite_if_exists = 1,  ///< replace an existing destination file
    skip_existing = 2,        ///< leave an existing destination alone, silently
    update_existing = 4,      ///< replace a destination that is older or no regular file
    recursive = 8,            ///< copy a directory with all it holds (`copy`)
    copy_symlinks = 16,       ///< copy a link as a link, not what it points to (`copy`)
    skip_symlinks = 32,       ///< ignore links (`copy`)
    create_symlinks = 64,     ///< instead of copying, make a link to the source
};

constexpr copy_option operator|(copy_option a, copy_option b) noexcept {
    return static_cast<copy_option>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}
constexpr copy_option operator&(copy_option a, copy_option b) noexcept {
    return static_cast<copy_option>(static_cast<unsigned>(a) & static_cast<unsigned>(b));
}
constexpr copy_option operator^(copy_option a, copy_option b) noexcept {
    return static_cast<copy_option>(static_cast<unsigned>(a) ^ static_cast<unsigned>(b));
}
constexpr copy_option operator~(copy_option a) noexcept {
    return static_cast<copy_option>(~static_cast<unsigned>(a));
}
constexpr copy_option& operator|=(copy_option& a, copy_option b) noexcept { return a = a | b; }
constexpr copy_option& operator&=(copy_option& a, copy_option b) noexcept { return a = a & b; }
constexpr copy_option& operator^=(copy_option& a, copy_option b) noexcept { return a = a ^ b; }

/// How a directory is listed; combined with |.
enum class directory_option : unsigned int {
    none = 0,
    follow_directory_symlinks = 1,  ///< enter a link to a directory as well
    skip_permission_denied = 2,     ///< a directory that may not be opened (EACCES) counts as empty
};

constexpr directory_option operator|(directory_option a, directory_option b) noexcept {
    return static_cast<directory_option>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}
constexpr directory_option operator&(directory_option a, directory_option b) noexcept {
    return static_cast<directory_option>(static_cast<unsigned>(a) & static_cast<unsigned>(b));
}
constexpr directory_option operator^(directory_option a, directory_option b) noexcept {
    return static_cast<directory_option>(static_cast<unsigned>(a) ^ static_cast<unsigned>(b));
}
constexpr directory_option operator~(directory_option a) noexcept {
    return static_cast<directory_option>(~static_cast<unsigned>(a));
}
constexpr directory_option& operator|=(directory_option& a, directory_option b) noexcept {
    return a = a | b;
}
constexpr directory_option& operator&=(directory_option& a, directory_option b) noexcept {
    return a = a & b;
}
constexpr directory_option& operator^=(directory_option& a, directory_option b) noexcept {
    return a = a ^ b;
}

/// How `rename` moves to another file system.
struct rename_options {
    constexpr rename_options() noexcept : preserve_last_write_time(0) {}

    /// Give every regular file that had to be copied the last-write time of its source; `rename` says
    /// which are left out.
    std::uint16_t preserve_last_write_time : 1;
};

/// What `space` tells of a file system, in bytes.
struct space_info {
    std::uint64_t capacity;
    std::uint64_t free;
    std::uint64_t available;  ///< to a process without privileges
};

}  // namespace ko::filesystem

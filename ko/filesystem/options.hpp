#pragma once

#include <cstdint>

namespace ko::filesystem {

/// Options of `copy` and `copy_file`; combined with |. `copy_symlinks` and `skip_symlinks`
/// exclude each other, and so do `overwrite_if_exists`, `skip_existing` and `update_existing`.
enum class copy_option : unsigned int {
    none = 0,                 ///< an existing destination is an error, except for `copy_directory`
    overwrite_if_exists = 1,  ///< replace an existing destination file
    skip_existing = 2,        ///< leave an existing destination alone, silently
    update_existing = 4,      ///< replace a destination that is older or not a regular file
    recursive = 8,            ///< copy a directory with its contents (`copy`)
    copy_symlinks = 16,       ///< copy a link as a link, not what it points to (`copy`)
    skip_symlinks = 32,       ///< ignore links (`copy`)
    create_symlinks = 64,     ///< make a link to the source instead of copying
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

/// Options of the directory iterators; combined with |.
enum class directory_option : unsigned int {
    none = 0,
    follow_directory_symlinks = 1,  ///< enter links to directories
    skip_permission_denied = 2,     ///< pass over a directory that may not be read
    read_status = 4,                ///< read the status of each entry (lstat) as it is listed
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

/// Options of `rename` for moves to another file system.
struct rename_options {
    constexpr rename_options() noexcept : preserve_last_write_time(0) {}

    /// Set the last-write time of every copied regular file to that of its source; see `rename` for
    /// the exceptions.
    std::uint16_t preserve_last_write_time : 1;
};

/// The result of `space`, in bytes.
struct space_info {
    std::uint64_t capacity;
    std::uint64_t free;
    std::uint64_t available;  ///< to a process without privileges
};

}  // namespace ko::filesystem

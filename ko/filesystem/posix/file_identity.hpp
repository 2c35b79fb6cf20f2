#pragma once

#include <sys/stat.h>

#include <string>

namespace ko::filesystem::detail {

/// What makes a file the same under every name that it has.
struct file_identity {
    explicit file_identity(struct stat const& found) noexcept
        : device(found.st_dev), number(found.st_ino) {}

    friend bool operator==(file_identity const& a, file_identity const& b) noexcept {
        return a.device == b.device && a.number == b.number;
    }

    dev_t device;
    ino_t number;
};

/// Whether both paths lead to the same file; not when one of them can't be asked.
bool is_same_file(std::string const& a8, std::string const& b8) noexcept;

/// Whether `path8`, once the directories missing in it are made, is the directory `dir8` or lies
/// below it, by what both really name. No when that can't be found out.
bool lies_within(std::string const& path8, std::string const& dir8);

}  // namespace ko::filesystem::detail

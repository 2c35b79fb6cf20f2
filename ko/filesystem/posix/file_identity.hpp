#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <vector>

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

/// Of what is at `path8`, links followed; none when stat fails.
std::optional<file_identity> identify(char const* path8) noexcept;

/// The directories that `path8` is or would lie in, up to the root: `path8` itself, if it is one, or
/// the deepest that exists once ".." has taken back missing ones, and all above it by their real path.
/// Throws the class of the error number when that can't be found out; path(): `path8`
std::vector<file_identity> directories_above(std::string const& path8);

}  // namespace ko::filesystem::detail

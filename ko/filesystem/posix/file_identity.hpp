// Internal: not installed.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace ko::filesystem::detail {

/// What makes a file the same under every name that it has.
struct file_identity {
    explicit file_identity(struct stat const& found) noexcept
        : device(found.st_dev), number(found.st_ino) {}

    friend bool operator==(file_identity const& a, file_identity const& b) noexcept {
        return a.device == b.device && a.number == b.number;
    }
    friend bool operator<(file_identity const& a, file_identity const& b) noexcept {
        return std::tie(a.device, a.number) < std::tie(b.device, b.number);
    }

    dev_t device;
    ino_t number;
};

/// Of what is at `path8`, links followed; none when stat fails.
std::optional<file_identity> identify(char const* path8) noexcept;

/// Fills `above` with the directories that `path8` is or would lie in, innermost first: `path8`
/// itself if it is a directory, else the deepest one that exists once ".." has taken back missing
/// ones, and its parents up to the root, or to where a parent may not be searched. Returns the error
/// number of a failure, or 0.
int find_directories_above(std::string const& path8, std::vector<file_identity>& above);

}  // namespace ko::filesystem::detail

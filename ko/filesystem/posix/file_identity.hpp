// Internal: not installed.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace ko::filesystem::detail {

/// Identifies a file under all its names.
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

/// Whether `path8` is a directory, or a link to one; false if stat fails.
bool leads_to_directory(char const* path8) noexcept;

/// The identity of `path8`, links followed; none if stat fails.
std::optional<file_identity> identify(char const* path8) noexcept;

/// Fills `above` with the directories that contain `path8` or would contain it, innermost first:
/// `path8` itself if it is a directory, else the deepest existing one, where ".." cancels a missing
/// element, and its parents up to the root, or to one whose parent can't be searched. Returns the
/// error number of a failure, or 0.
int find_directories_above(std::string const& path8, std::vector<file_identity>& above);

}  // namespace ko::filesystem::detail

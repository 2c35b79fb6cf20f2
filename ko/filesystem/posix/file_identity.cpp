#include <ko/filesystem/posix/file_identity.hpp>

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace ko::filesystem::detail {

namespace {

/// The directory that is left of `path8` when all that is missing in it were made: the deepest that
/// exists, after the missing ones that ".." takes back.
std::string deepest_existing(std::string const& path8) {
    std::string existing = path8.front() == '/' ? "/" : ".";
    std::size_t missing = 0;
    for (std::size_t begin = 0, end = 0; begin < path8.size(); begin = end + 1) {
        end = std::min(path8.find('/', begin), path8.size());
        std::string_view const name = std::string_view(path8).substr(begin, end - begin);
        if (name.empty() || name == ".") continue;
        if (missing != 0) {
            missing = name == ".." ? missing - 1 : missing + 1;
            continue;
        }
        std::string next = existing + '/';
        next += name;
        struct stat found;
        if (::stat(next.c_str(), &found) == 0 && S_ISDIR(found.st_mode))
            existing.swap(next);
        else
            missing = 1;
    }
    return existing;
}

}  // namespace

bool is_same_file(std::string const& a8, std::string const& b8) noexcept {
    struct stat a;
    struct stat b;
    return ::stat(a8.c_str(), &a) == 0 && ::stat(b8.c_str(), &b) == 0 &&
           file_identity(a) == file_identity(b);
}

bool lies_within(std::string const& path8, std::string const& dir8) {
    struct stat found;
    if (path8.empty() || ::stat(dir8.c_str(), &found) != 0) return false;
    file_identity const dir(found);
    // Up through ".." to the root, which is its own parent.
    std::string place = deepest_existing(path8);
    if (::stat(place.c_str(), &found) != 0) return false;
    for (file_identity here(found);;) {
        if (here == dir) return true;
        place += "/..";
        if (::stat(place.c_str(), &found) != 0) return false;
        file_identity const above(found);
        if (above == here) return false;
        here = above;
    }
}

}  // namespace ko::filesystem::detail

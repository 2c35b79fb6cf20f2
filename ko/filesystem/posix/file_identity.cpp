#include <ko/filesystem/posix/file_identity.hpp>

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <string_view>

#include <ko/filesystem/posix/directory_stream.hpp>
#include <ko/filesystem/posix/system_call.hpp>

namespace ko::filesystem::detail {

namespace {

/// The maximum length of a path of ".." before its directory is opened; below every PATH_MAX.
constexpr std::size_t longest_climb = 1000;

/// The deepest existing directory that would be above `path8` if everything missing in it were
/// made, where ".." cancels a missing element.
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
        if (leads_to_directory(next.c_str()))
            existing.swap(next);
        else
            missing = 1;
    }
    return existing;
}

}  // namespace

bool leads_to_directory(char const* path8) noexcept {
    struct stat found;
    return ::stat(path8, &found) == 0 && S_ISDIR(found.st_mode);
}

std::optional<file_identity> identify(char const* path8) noexcept {
    struct stat found;
    if (::stat(path8, &found) != 0) return std::nullopt;
    return file_identity(found);
}

int find_directories_above(std::string const& path8, std::vector<file_identity>& above) {
    above.clear();
    std::string place = leads_to_directory(path8.c_str()) ? path8 : deepest_existing(path8);
    // By "..", since the path of a directory may exceed the system's limit, or no longer exist.
    for (file_descriptor base(AT_FDCWD);;) {
        struct stat found;
        if (::fstatat(base.get(), place.c_str(), &found, 0) != 0) break;
        file_identity const here(found);
        if (!above.empty() && above.back() == here) return 0;  // the root is its own parent
        above.push_back(here);
        if (place.size() < longest_climb) {
            place += "/..";
            continue;
        }
        int const next = open_directory(base.get(), place.c_str(), 0);
        if (next == -1) break;
        base.reset(next);
        place = "..";
    }
    // Directories above one that can't be searched can't be copied into it either.
    return errno == EACCES ? 0 : errno;
}

}  // namespace ko::filesystem::detail

#include <ko/filesystem/posix/file_identity.hpp>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <string_view>

#include <ko/filesystem/detail/error_mapping.hpp>

namespace ko::filesystem::detail {

namespace {

bool is_directory(std::string const& path8) noexcept {
    struct stat found;
    return ::stat(path8.c_str(), &found) == 0 && S_ISDIR(found.st_mode);
}

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
        if (is_directory(next))
            existing.swap(next);
        else
            missing = 1;
    }
    return existing;
}

}  // namespace

std::optional<file_identity> identify(char const* path8) noexcept {
    struct stat found;
    if (::stat(path8, &found) != 0) return std::nullopt;
    return file_identity(found);
}

std::vector<file_identity> directories_above(std::string const& path8) {
    std::vector<file_identity> result;
    if (path8.empty()) return result;
    char buffer[PATH_MAX];
    if (::realpath(deepest_existing(path8).c_str(), buffer) == nullptr)
        throw_errno_exception(errno, path8, {});
    // Of a real path, what is left without the last name is the directory above.
    for (std::string place = buffer; !place.empty();) {
        if (auto const identity = identify(place.c_str())) result.push_back(*identity);
        place.resize(place == "/" ? 0 : std::max<std::size_t>(place.rfind('/'), 1));
    }
    return result;
}

}  // namespace ko::filesystem::detail

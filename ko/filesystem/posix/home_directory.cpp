#include <ko/filesystem/posix/home_directory.hpp>

#include <pwd.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>

namespace ko::filesystem::detail {

namespace {

constexpr std::size_t user_record_bytes = 1024;

/// The home directory in the user record that `look_up` finds; empty if it finds none.
template <class LookUp>
std::string home_in_user_database(LookUp look_up) {
    ::passwd record;
    ::passwd* found = nullptr;
    char buffer[user_record_bytes];
    if (look_up(&record, buffer, sizeof buffer, &found) != 0 || found == nullptr) return {};
    return found->pw_dir == nullptr ? std::string() : found->pw_dir;
}

}  // namespace

std::string own_home() {
    char const* const home = std::getenv("HOME");
    if (home != nullptr && *home != '\0') return home;
    return home_in_user_database(
        [](auto... result) { return ::getpwuid_r(::getuid(), result...); });
}

std::string home_of(std::string const& user) {
    // The database call would take the text before the zero as the name.
    if (user.find('\0') != user.npos) return {};
    return home_in_user_database(
        [&user](auto... result) { return ::getpwnam_r(user.c_str(), result...); });
}

}  // namespace ko::filesystem::detail

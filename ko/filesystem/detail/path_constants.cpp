#include <ko/filesystem/detail/path_constants.hpp>

#include <pwd.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>

#include <ko/filesystem/detail/encoding.hpp>
#include <ko/filesystem/detail/text_scan.hpp>
#include <ko/filesystem/posix/encoding.hpp>

namespace ko::filesystem {

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

template <class CharT>
bool begins_with_tilde(std::basic_string<CharT> const& p) noexcept {
    return !p.empty() && p.front() == pathname_traits<CharT>::TILDE_CHARACTER;
}

template <class CharT>
bool names_own_home(std::basic_string<CharT> const& p) noexcept {
    return begins_with_tilde(p) &&
           (p.size() == 1 || p[1] == pathname_traits<CharT>::PATHNAME_SEPARATOR_CHARACTER);
}

/// `home`, followed by the part of `p` after the tilde. "~/" results in no trailing slash, and if
/// there is no home, nothing of `p` is kept.
template <class CharT>
std::basic_string<CharT> below_own_home(std::string const& home,
                                        std::basic_string<CharT> const& p) {
    std::size_t const length = home.empty() || p.size() <= 2 ? 0 : p.size() - 1;
    std::basic_string<CharT> result(home.size() + length, CharT());
    auto const rest = p.end() - static_cast<std::ptrdiff_t>(length);
    std::copy(rest, p.end(), std::copy(home.begin(), home.end(), result.begin()));
    return result;
}

}  // namespace

std::string pathname_traits<char>::replace_tilde_with_home_dir(std::string const& p) {
    if (!begins_with_tilde(p)) return p;
    if (names_own_home(p)) return below_own_home(own_home(), p);
    std::size_t const name_end = std::min(p.find(PATHNAME_SEPARATOR_CHARACTER), p.size());
    std::string home = home_of(p.substr(1, name_end - 1));
    if (home.empty()) return p;
    home.append(p, name_end, p.npos);
    return home;
}

std::u16string pathname_traits<char16_t>::replace_tilde_with_home_dir(std::u16string const& p) {
    if (!names_own_home(p))
        return detail::from_filesystem_strict(
            pathname_traits<char>::replace_tilde_with_home_dir(detail::to_filesystem(p)));
    std::string const home = own_home();
    if (detail::is_ascii<char16_t>(p) && detail::is_ascii<char>(home))
        return below_own_home(home, p);  // nothing to convert
    std::string const p8 = detail::to_filesystem(p);
    return p8.empty() ? std::u16string() : detail::from_filesystem_strict(below_own_home(home, p8));
}

std::string pathname_traits<char16_t>::to_filesystem(std::u16string const& s) {
    return detail::to_filesystem(s);
}

std::u16string pathname_traits<char16_t>::from_filesystem(std::string const& s) {
    return detail::from_filesystem(s);
}

}  // namespace ko::filesystem

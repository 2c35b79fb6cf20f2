#include <ko/filesystem/detail/path_expansion.hpp>

#include <pwd.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

#include <ko/filesystem/detail/encoding.hpp>
#include <ko/filesystem/detail/path_algorithms.hpp>
#include <ko/filesystem/detail/path_constants.hpp>
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
bool names_own_home(std::basic_string<CharT> const& p) noexcept {
    return detail::algorithm::begins_with_tilde<CharT>(p) &&
           (p.size() == 1 || detail::algorithm::is_separator(p[1]));
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
    if (!detail::algorithm::begins_with_tilde<char>(p)) return p;
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

namespace detail {

using traits = pathname_traits<char16_t>;

std::u16string make_expanded_path(std::u16string const& p, bool suppress_expansion) {
    return suppress_expansion ? p : traits::replace_tilde_with_home_dir(p);
}

bool is_absolute_path_when_expanded(std::u16string const& p, bool suppress_expansion) {
    if (suppress_expansion || !algorithm::begins_with_tilde<char16_t>(p))
        return algorithm::is_absolute<char16_t>(p);
    return algorithm::is_absolute<char16_t>(traits::replace_tilde_with_home_dir(p));
}

void move_down(std::u16string const& p, std::size_t root_length, std::size_t& position,
               std::u16string& element) {
    if (position >= p.size()) {
        element.clear();
        return;
    }
    if (element.size() >= p.size() - position) {
        position = p.size();
        element.clear();
        return;
    }
    bool const at_root = position == 0 && root_length != 0;
    std::size_t const step = at_root ? root_length : element.size() + 1;
    std::size_t const start = std::min(position + step, p.size());
    std::size_t const end = std::min(p.find(traits::PATHNAME_SEPARATOR_CHARACTER, start), p.size());
    element.assign(p, start, end - start);
    position = start;
}

void move_up(std::u16string const& p, std::size_t root_length, std::size_t& position,
             std::u16string& element) {
    if (position == 0) return;
    if (position == root_length) {
        element = traits::ROOT_PATHNAME;
        position = 0;
        return;
    }
    std::u16string_view const head =
        std::u16string_view(p).substr(0, position >= p.size() ? p.size() : position - 1);
    std::size_t const separator = algorithm::last_separator(head);
    std::size_t const start = separator == head.npos ? 0 : separator + 1;
    element.assign(head.substr(start));
    position = start;
}

}  // namespace detail

}  // namespace ko::filesystem

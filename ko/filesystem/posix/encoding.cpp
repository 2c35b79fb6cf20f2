#include <ko/filesystem/posix/encoding.hpp>

#include <cstddef>
#include <string_view>
#include <type_traits>

#include <ko/filesystem/detail/encoding.hpp>
#include <ko/filesystem/detail/path_constants.hpp>
#include <ko/filesystem/posix/iconv_converter.hpp>

namespace ko::filesystem {

namespace {

using posix::detail::malformed;

constexpr std::size_t fast_path_limit = 259;

/// Converts `s` without iconv when it is short and ASCII, as most paths are. One pass without a
/// branch, so that the compiler makes vector code of it.
template <class From, class To>
bool convert_short_ascii(std::basic_string<From> const& s, std::basic_string<To>& result) {
    using unit_type = std::conditional_t<sizeof(From) == 1, unsigned char, char16_t>;
    if (s.size() > fast_path_limit) return false;
    To converted[fast_path_limit];
    unit_type all_bits = 0;
    for (std::size_t i = 0; i != s.size(); ++i) {
        auto const unit = static_cast<unit_type>(s[i]);
        all_bits = static_cast<unit_type>(all_bits | unit);
        converted[i] = static_cast<To>(unit);
    }
    if (all_bits >= 0x80) return false;
    result.assign(converted, s.size());
    return true;
}

std::u16string from_utf8(std::string const& s, malformed policy) {
    std::u16string result;
    if (convert_short_ascii(s, result)) return result;
    auto const converter = posix::detail::get_thread_local_iconv_converter<0>("UTF-16LE", "UTF-8");
    if (!posix::detail::decode(s, converter, policy, result)) result.clear();
    return result;
}

}  // namespace

std::string posix::detail::to_filesystem_native_impl(std::u16string const& s, char const* tocode) {
    static std::string_view const subst_chars =
        std::string_view(tocode) == "UTF-8" ? "\xEF\xBF\xBD" : "\x1A";
    std::string result;
    if (convert_short_ascii(s, result)) return result;
    auto const converter = get_thread_local_iconv_converter<1>(tocode, "UTF-16LE");
    if (!encode(s, converter, subst_chars, result)) result.clear();
    return result;
}

std::string pathname_traits<char16_t>::to_filesystem(std::u16string const& s) {
    return posix::detail::to_filesystem_native_impl(s, "UTF-8");
}

std::u16string pathname_traits<char16_t>::from_filesystem(std::string const& s) {
    return from_utf8(s, malformed::replace_bytes);
}

namespace detail {

std::string to_filesystem(std::u16string const& s) {
    return posix::detail::to_filesystem_native_impl(s, "UTF-8");
}

std::u16string from_filesystem(std::string const& s) {
    return from_utf8(s, malformed::replace_bytes);
}

std::u16string from_filesystem_strict(std::string const& s) {
    return from_utf8(s, malformed::reject);
}

std::string make_native_access_form(std::u16string const& s) {
    return posix::detail::to_filesystem_native_impl(s, "UTF-8");
}

std::string make_access_form(std::string const& s) { return s; }

}  // namespace detail

}  // namespace ko::filesystem

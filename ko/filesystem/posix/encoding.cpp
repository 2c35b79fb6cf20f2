#include <ko/filesystem/posix/encoding.hpp>

#include <cstddef>
#include <string_view>

#include <ko/filesystem/detail/encoding.hpp>
#include <ko/filesystem/detail/text_scan.hpp>
#include <ko/filesystem/posix/iconv_converter.hpp>

namespace ko::filesystem {

namespace {

using posix::detail::malformed;

/// Whether `s` can be converted without iconv, unit by unit, as most paths can.
template <class CharT>
bool is_short_ascii(std::basic_string_view<CharT> s) noexcept {
    return s.size() <= posix::detail::fast_path_limit && detail::is_ascii(s);
}

iconv_t utf8_converter() {
    return posix::detail::get_thread_local_iconv_converter<0>("UTF-16LE", "UTF-8");
}

/// Appends to `result`; returns false if the conversion can't be completed.
bool convert_utf8(std::string_view s, malformed policy, std::u16string& result) {
    return posix::detail::decode(s, utf8_converter(), policy, result);
}

std::u16string from_utf8(std::string_view s, malformed policy) {
    if (is_short_ascii(s)) return {s.begin(), s.end()};
    std::u16string result;
    if (!convert_utf8(s, policy, result)) result.clear();
    return result;
}

}  // namespace

std::string posix::detail::to_filesystem_native_impl(std::u16string const& s, char const* tocode) {
    static std::string_view const subst_chars =
        std::string_view(tocode) == "UTF-8" ? utf8_replacement : "\x1A";
    if (is_short_ascii<char16_t>(s)) return {s.begin(), s.end()};
    auto const converter = get_thread_local_iconv_converter<1>(tocode, "UTF-16LE");
    std::string result;
    if (!encode(s, converter, subst_chars, result)) result.clear();
    return result;
}

void posix::detail::open_converters() {
    utf8_converter();
    get_thread_local_iconv_converter<1>("UTF-8", "UTF-16LE");
}

namespace detail {

std::string to_filesystem(std::u16string const& s) {
    return posix::detail::to_filesystem_native_impl(s, "UTF-8");
}

std::u16string from_filesystem(std::string const& s) {
    return from_utf8(s, malformed::replace_bytes);
}

std::u16string from_filesystem_strict(std::string_view s) {
    return from_utf8(s, malformed::reject);
}

bool append_from_filesystem(std::string_view s, std::u16string& result) {
    if (s.size() <= posix::detail::fast_path_limit) {  // in one pass, since names are short
        char16_t units[posix::detail::fast_path_limit];
        unsigned bits = 0;
        for (std::size_t i = 0; i != s.size(); ++i)
            bits |= units[i] = static_cast<unsigned char>(s[i]);
        if ((bits & 0x80) == 0) {
            result.append(units, s.size());
            return true;
        }
    }
    std::size_t const length = result.size();
    bool const is_utf8 = convert_utf8(s, malformed::reject, result);
    if (!is_utf8) result.resize(length);
    return is_utf8;
}

std::string make_native_access_form(std::u16string const& s) {
    return posix::detail::to_filesystem_native_impl(s, "UTF-8");
}

std::string make_access_form(std::string const& s) { return s; }

}  // namespace detail

}  // namespace ko::filesystem

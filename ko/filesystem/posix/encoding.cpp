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

/// The conversion of a text that is short and ASCII, as most paths are, without iconv. One pass
/// without a branch, so that the compiler makes vector code of it.
template <class From, class To>
class short_ascii {
public:
    explicit short_ascii(std::basic_string<From> const& s) noexcept : size_(s.size()) {
        using unit_type = std::conditional_t<sizeof(From) == 1, unsigned char, char16_t>;
        if (s.size() > fast_path_limit) return;
        unit_type all_bits = 0;
        for (std::size_t i = 0; i != s.size(); ++i) {
            auto const unit = static_cast<unit_type>(s[i]);
            all_bits = static_cast<unit_type>(all_bits | unit);
            converted_[i] = static_cast<To>(unit);
        }
        succeeded_ = all_bits < 0x80;
    }

    /// Whether the text was short and ASCII.
    explicit operator bool() const noexcept { return succeeded_; }
    std::basic_string<To> text() const { return {converted_, size_}; }

private:
    std::size_t size_;
    bool succeeded_ = false;
    To converted_[fast_path_limit];
};

std::u16string from_utf8(std::string const& s, malformed policy) {
    if (short_ascii<char, char16_t> const ascii(s); ascii) return ascii.text();
    auto const converter = posix::detail::get_thread_local_iconv_converter<0>("UTF-16LE", "UTF-8");
    std::u16string result;
    if (!posix::detail::decode(s, converter, policy, result)) result.clear();
    return result;
}

}  // namespace

std::string posix::detail::to_filesystem_native_impl(std::u16string const& s, char const* tocode) {
    static std::string_view const subst_chars =
        std::string_view(tocode) == "UTF-8" ? "\xEF\xBF\xBD" : "\x1A";
    if (short_ascii<char16_t, char> const ascii(s); ascii) return ascii.text();
    auto const converter = get_thread_local_iconv_converter<1>(tocode, "UTF-16LE");
    std::string result;
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

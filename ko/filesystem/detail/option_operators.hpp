#pragma once

#include <type_traits>

namespace ko::filesystem {

namespace detail {
/// Whether `Option` is an enumeration of options, which are combined with |.
template <class Option>
inline constexpr bool is_option = false;

template <class Option>
using if_option = std::enable_if_t<is_option<Option>, Option>;
}  // namespace detail

template <class Option>
constexpr detail::if_option<Option> operator|(Option a, Option b) noexcept {
    return static_cast<Option>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}
template <class Option>
constexpr detail::if_option<Option> operator&(Option a, Option b) noexcept {
    return static_cast<Option>(static_cast<unsigned>(a) & static_cast<unsigned>(b));
}
template <class Option>
constexpr detail::if_option<Option> operator^(Option a, Option b) noexcept {
    return static_cast<Option>(static_cast<unsigned>(a) ^ static_cast<unsigned>(b));
}
template <class Option>
constexpr detail::if_option<Option> operator~(Option a) noexcept {
    return static_cast<Option>(~static_cast<unsigned>(a));
}
template <class Option>
constexpr detail::if_option<Option>& operator|=(Option& a, Option b) noexcept {
    return a = a | b;
}
template <class Option>
constexpr detail::if_option<Option>& operator&=(Option& a, Option b) noexcept {
    return a = a & b;
}
template <class Option>
constexpr detail::if_option<Option>& operator^=(Option& a, Option b) noexcept {
    return a = a ^ b;
}

}  // namespace ko::filesystem

// Internal: not installed.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include <ko/filesystem/detail/path_constants.hpp>
#include <ko/filesystem/detail/text_scan.hpp>
#include <ko/filesystem/exceptions/throw.hpp>

/// The path text algorithms, once for UTF-8 and UTF-16. The views they return point into their
/// argument. The public functions, with their documentation, are in path_decomposition.hpp
/// and path_composition.hpp.
namespace ko::filesystem::detail::algorithm {

template <class CharT>
using text = std::basic_string<CharT>;
template <class CharT>
using view = std::basic_string_view<CharT>;

template <class CharT>
bool is_separator(CharT c) noexcept {
    return c == pathname_traits<CharT>::PATHNAME_SEPARATOR_CHARACTER;
}

template <class CharT>
std::size_t last_separator(view<CharT> p) noexcept {
    return p.rfind(pathname_traits<CharT>::PATHNAME_SEPARATOR_CHARACTER);
}

template <class CharT>
bool is_root(view<CharT> p) noexcept {
    return p.size() == 1 && is_separator(p.front());
}

/// Whether `name` is "." or "..".
template <class CharT>
bool is_dot_name(view<CharT> name) noexcept {
    return name == pathname_traits<CharT>::CURRENT_DIRECTORY ||
           name == pathname_traits<CharT>::PARENT_DIRECTORY;
}

template <class CharT>
bool is_absolute(view<CharT> p) noexcept {
    return !p.empty() && is_separator(p.front());
}

// Decomposition

template <class CharT>
view<CharT> parent_path(view<CharT> p) noexcept {
    std::size_t const separator = last_separator(p);
    if (separator == p.npos || is_root(p)) return {};
    return p.substr(0, std::max<std::size_t>(separator, 1));
}

template <class CharT>
view<CharT> filename(view<CharT> p) noexcept {
    std::size_t const separator = last_separator(p);
    return separator == p.npos || is_root(p) ? p : p.substr(separator + 1);
}

/// The last dot of the last element; `npos` if it has none.
template <class CharT>
std::size_t last_dot(view<CharT> p) noexcept {
    for (std::size_t i = p.size(); i-- != 0 && !is_separator(p[i]);)
        if (p[i] == pathname_traits<CharT>::DOT_CHARACTER) return i;
    return p.npos;
}

template <class CharT>
struct name_parts {
    view<CharT> stem;
    view<CharT> extension;
};

/// Splits a name at its last dot, which belongs to neither part.
template <class CharT>
name_parts<CharT> split_name(view<CharT> name) noexcept {
    std::size_t const dot = last_dot(name);
    if (dot == name.npos || is_dot_name(name)) return {name, {}};
    return {name.substr(0, dot), name.substr(dot + 1)};
}

/// The same, but a dot at the end belongs to the stem.
template <class CharT>
name_parts<CharT> split_name_keeping_trailing_dot(view<CharT> name) noexcept {
    bool const trailing_dot = !name.empty() && name.back() == pathname_traits<CharT>::DOT_CHARACTER;
    return trailing_dot ? name_parts<CharT>{name, {}} : split_name(name);
}

// Composition

template <class CharT>
bool has_doubled_separator(view<CharT> p) noexcept {
    return has_doubled(p, pathname_traits<CharT>::PATHNAME_SEPARATOR_CHARACTER);
}

template <class CharT>
bool has_trailing_separator(view<CharT> p) noexcept {
    return p.size() > 1 && is_separator(p.back());
}

/// Collapses runs of separators, and removes one at the end unless it is the root.
template <class CharT>
void tidy_separators(text<CharT>& p) noexcept {
    auto const both = [](CharT a, CharT b) { return is_separator(a) && is_separator(b); };
    if (has_doubled_separator<CharT>(p)) p.erase(std::unique(p.begin(), p.end(), both), p.end());
    if (has_trailing_separator<CharT>(p)) p.pop_back();
}

template <class CharT>
bool begins_with_tilde(view<CharT> p) noexcept {
    return !p.empty() && p.front() == pathname_traits<CharT>::TILDE_CHARACTER;
}

/// Whether `p` is its own native form.
template <class CharT>
bool is_native_form(view<CharT> p, bool expand_tilde) noexcept {
    return !(expand_tilde && begins_with_tilde(p)) && !has_trailing_separator(p) &&
           !has_doubled_separator(p);
}

template <class CharT>
text<CharT> native_form(text<CharT> const& p, bool expand_tilde) {
    bool const tilde = expand_tilde && begins_with_tilde<CharT>(p);
    text<CharT> native = tilde ? pathname_traits<CharT>::replace_tilde_with_home_dir(p) : p;
    tidy_separators(native);
    return native;
}

/// `p` appended to `start`, both unchanged; empty if `start` is.
template <class CharT>
text<CharT> joined(view<CharT> start, view<CharT> p) {
    text<CharT> result;
    if (start.empty()) return result;
    result.reserve(start.size() + 1 + p.size());
    result = start;
    if (!is_separator(result.back()))
        result += pathname_traits<CharT>::PATHNAME_SEPARATOR_CHARACTER;
    result += p;
    return result;
}

template <class CharT>
text<CharT>& concatenate(text<CharT>& base, text<CharT> const& addition, bool expand_tilde) {
    text<CharT> made;
    bool const is_native = is_native_form<CharT>(addition, expand_tilde);
    if (!is_native) made = native_form(addition, expand_tilde);
    text<CharT> const& piece = is_native ? addition : made;
    if (base.empty()) return base = piece;
    if (is_absolute<CharT>(piece)) throw_invalid_argument("Absolute path not permitted");

    // `addition` may be `base` itself: read its length before `base` grows, its data after.
    std::size_t const length = piece.size();
    bool const separated = is_separator(base.back());
    base.reserve(base.size() + 1 + length);  // nothing below can fail
    if (!separated) base += pathname_traits<CharT>::PATHNAME_SEPARATOR_CHARACTER;
    return base.append(piece.data(), length);
}

template <class CharT>
text<CharT>& remove_filename(text<CharT>& p) noexcept {
    p.erase(parent_path<CharT>(p).size());
    return p;
}

}  // namespace ko::filesystem::detail::algorithm

#pragma once

#include <cstddef>
#include <iosfwd>
#include <iterator>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include <ko/filesystem/detail/path_traits.hpp>

namespace ko::filesystem {

namespace detail {
/// `type` is std::filesystem::path in its specialisation in ko/filesystem/std_path.hpp.
template <class System>
struct std_path {
    static_assert(sizeof(System) == 0, "to_std and from_std need <ko/filesystem/std_path.hpp>");
    using type = System;
};

/// Changes the text of a path in place.
struct path_text;
}  // namespace detail

/// A path for the operations: UTF-16 text in native form (a leading tilde expanded, single slashes,
/// none at the end except the root's), and a flag whether a leading tilde of appended text is
/// expanded. Constructing one looks up home directories only; "." and ".." stay.
///
/// - Joining a tilde that expands to nothing, since there is no home, leaves a slash at the end:
///   "a/".
/// - A tilde that was kept is expanded by `copy`, `canonical`, `weakly_canonical`, `relative`,
///   `get_unc_path` and the option `create_symlinks`. A text "./~x" names a file "~x".
///
/// Unlike with std::filesystem::path, joining an absolute path throws instead of replacing, an
/// extension has no dot, and two paths are equal if their texts are.
template <class System, class Internal, class Traits>
class basic_path {
    /// A text, but nothing that converts to a path implicitly.
    template <class Text>
    static constexpr bool is_text =
        std::is_convertible_v<Text const&, std::basic_string_view<Internal>> &&
        !std::is_convertible_v<Text const&, basic_path>;
    template <class Text>
    using if_text = std::enable_if_t<is_text<Text>, bool>;
    // A template, so that arguments which convert to a text still select the overload for text.
    template <class Path>
    using if_path = std::enable_if_t<std::is_same_v<Path, basic_path>, basic_path>;

public:
    using string_type = std::basic_string<Internal>;
    using native_string_type = std::basic_string<System>;
    class const_iterator;
    using iterator = const_iterator;

    /// The empty path.
    basic_path() = default;

    /// The path of `text`, converted to native form; a leading tilde is expanded if `expand_tilde`.
    explicit basic_path(string_type const& text, bool expand_tilde = true)
        : text_(Traits::make_native_form(text, expand_tilde)), expand_tilde_(expand_tilde) {}

    /// The path of a UTF-8 text.
    /// Throws InvalidArgument "Invalid UTF-8" if it isn't valid; path(): `text` with U+FFFD for
    /// each bad byte. Also for a text beyond ASCII in a thread whose converter could not be opened;
    /// path(): empty (see detail/encoding.hpp).
    static basic_path from_utf8(native_string_type const& text, bool expand_tilde = true) {
        return basic_path(Traits::from_native(text), expand_tilde);
    }
    template <class Text>
    static std::enable_if_t<std::is_convertible_v<Text const&, std::basic_string_view<System>> &&
                                !std::is_convertible_v<Text const&, native_string_type const&>,
                            basic_path>
    from_utf8(Text const& text, bool expand_tilde = true) {
        return from_utf8(native_string_type(std::basic_string_view<System>(text)), expand_tilde);
    }

    /// The path of the file that `p` names: a tilde in it is not expanded. `expand_tilde` applies
    /// to text that is joined later. Needs ko/filesystem/std_path.hpp.
    /// Throws like `from_utf8`.
    template <class Char = System>
    static basic_path from_std(typename detail::std_path<Char>::type const& p,
                               bool expand_tilde = false) {
        return basic_path(Traits::from_native(p.native()), false).with_expand_tilde(expand_tilde);
    }
    /// The same path as a std::filesystem::path, with the text of `string()`. Needs
    /// ko/filesystem/std_path.hpp.
    template <class Char = System>
    [[nodiscard]] typename detail::std_path<Char>::type to_std() const {
        return string();
    }

    /// The same text, not expanded again, with another flag.
    [[nodiscard]] basic_path with_expand_tilde(bool expand_tilde) const {
        basic_path other(*this);
        other.expand_tilde_ = expand_tilde;
        return other;
    }

    void swap(basic_path& other) noexcept {
        text_.swap(other.text_);
        std::swap(expand_tilde_, other.expand_tilde_);
    }
    friend void swap(basic_path& a, basic_path& b) noexcept { a.swap(b); }

    [[nodiscard]] string_type const& native() const noexcept { return text_; }
    [[nodiscard]] bool expand_tilde() const noexcept { return expand_tilde_; }
    [[nodiscard]] bool empty() const noexcept { return text_.empty(); }

    /// The text in UTF-8, as passed to the system: an unpaired surrogate becomes U+FFFD, but a high
    /// one at the end makes the result empty.
    [[nodiscard]] native_string_type string() const { return Traits::to_native(text_); }

    /// Doesn't compile, and says what to use: the text is UTF-16, so there is no UTF-8 to point to.
    /// libstdc++'s file streams accept as a path anything with this function and the next.
    template <class Char = System>
    Char const* c_str() const {
        static_assert(sizeof(Char) == 0, "write p.string(), which is UTF-8: a upath is UTF-16");
        return nullptr;
    }
    /// Does nothing: a native form has no other separators.
    basic_path& make_preferred() noexcept { return *this; }

    [[nodiscard]] bool is_absolute() const { return Traits::is_absolute(text_); }
    [[nodiscard]] bool is_relative() const { return !is_absolute(); }

    /// The elements, each a path: "/" first if there is one, then the names. The iterators are
    /// valid until this path changes.
    [[nodiscard]] const_iterator begin() const { return const_iterator(*this, 0); }
    [[nodiscard]] const_iterator end() const { return const_iterator(*this, text_.size()); }

    /// "/" or empty.
    [[nodiscard]] basic_path root_path() const { return part(Traits::extract_root_path(text_)); }
    /// The path without its root.
    [[nodiscard]] basic_path relative_path() const {
        return part(Traits::extract_relative_path(text_));
    }
    /// The path without its last element; empty for the root and for a single name.
    [[nodiscard]] basic_path parent_path() const {
        return part(Traits::extract_parent_path(text_));
    }
    /// The last element; "/" for the root.
    [[nodiscard]] basic_path filename() const { return part(Traits::extract_filename(text_)); }
    /// The last element up to its last dot.
    [[nodiscard]] basic_path stem() const { return part(Traits::extract_stem(text_)); }
    /// What follows the last dot of the last element, without the dot.
    [[nodiscard]] basic_path extension() const { return part(Traits::extract_extension(text_)); }

    [[nodiscard]] bool has_root_path() const { return is_absolute(); }
    [[nodiscard]] bool has_relative_path() const { return !relative_path().empty(); }
    [[nodiscard]] bool has_parent_path() const { return !parent_path().empty(); }
    [[nodiscard]] bool has_filename() const { return !filename().empty(); }
    [[nodiscard]] bool has_stem() const { return !stem().empty(); }
    [[nodiscard]] bool has_extension() const { return !extension().empty(); }

    /// This path without "." and "..", by its text alone: links are not resolved. See
    /// `detail::lexically_normal`.
    [[nodiscard]] basic_path lexically_normal() const {
        return part(Traits::lexically_normal(text_));
    }
    /// This path relative to `base`, by the texts alone; empty if there is no such path. See
    /// `detail::lexically_relative`.
    [[nodiscard]] basic_path lexically_relative(basic_path const& base) const {
        return part(Traits::lexically_relative(text_, base.text_));
    }
    /// The same, or this path if that is empty.
    [[nodiscard]] basic_path lexically_proximate(basic_path const& base) const {
        basic_path const way = lexically_relative(base);
        return way.empty() ? *this : way;
    }

    /// Drops the last element; the root becomes empty.
    basic_path& remove_filename() {
        Traits::remove_filename(text_);
        return *this;
    }

    /// Joins `name` to the parent path, or to the root if this path is the root.
    /// Throws like `operator/=`, and leaves this path unchanged then.
    basic_path& replace_filename(string_type const& name) { return replace_last(name); }
    /// The same for a path: a tilde in `name` is not expanded.
    basic_path& replace_filename(basic_path const& name) { return replace_last(name); }

    /// Gives the last element the extension `ext`, with or without its dot; see
    /// `detail::replace_extension` for what is left unchanged.
    /// Throws InvalidArgument "Invalid extension".
    basic_path& replace_extension(string_type const& ext) {
        Traits::replace_extension(text_, ext);
        return *this;
    }

    /// Appends a slash and `right` in native form. An empty `right` appends nothing.
    /// Throws InvalidArgument "Absolute path not permitted" if `right` (its tilde expanded, if this
    /// path does that) begins with a slash and this path is not empty.
    basic_path& operator/=(string_type const& right) {
        if (!right.empty()) Traits::concatenate_pathname(text_, right, expand_tilde_);
        return *this;
    }

    friend basic_path operator/(basic_path const& left, string_type const& right) {
        basic_path joined;
        joined.text_.reserve(left.text_.size() + 1 + right.size());
        joined.text_ = left.text_;
        joined.expand_tilde_ = left.expand_tilde_;
        joined /= right;
        return joined;
    }

    /// The same for a path: a tilde in `right` is not expanded.
    template <class Path>
    if_path<Path>& operator/=(Path const& right) {
        if (!right.empty()) Traits::concatenate_pathname(text_, right.text_, false);
        return *this;
    }
    template <class Path>
    friend if_path<Path> operator/(basic_path const& left, Path const& right) {
        basic_path joined(left);
        joined /= right;
        return joined;
    }

    /// By UTF-16 units, not by elements: "a.b" comes before "a/b".
    friend bool operator==(basic_path const& a, basic_path const& b) noexcept {
        return a.text_ == b.text_;
    }
    friend bool operator!=(basic_path const& a, basic_path const& b) noexcept { return !(a == b); }
    friend bool operator<(basic_path const& a, basic_path const& b) noexcept {
        return a.text_ < b.text_;
    }
    friend bool operator>(basic_path const& a, basic_path const& b) noexcept { return b < a; }
    friend bool operator<=(basic_path const& a, basic_path const& b) noexcept { return !(b < a); }
    friend bool operator>=(basic_path const& a, basic_path const& b) noexcept { return !(a < b); }

    /// Compares with the text exactly as given, not with its native form.
    template <class Text>
    friend if_text<Text> operator==(basic_path const& p, Text const& text) noexcept {
        return p.text_ == std::basic_string_view<Internal>(text);
    }
    template <class Text>
    friend if_text<Text> operator==(Text const& text, basic_path const& p) noexcept {
        return p == text;
    }
    template <class Text>
    friend if_text<Text> operator!=(basic_path const& p, Text const& text) noexcept {
        return !(p == text);
    }
    template <class Text>
    friend if_text<Text> operator!=(Text const& text, basic_path const& p) noexcept {
        return !(p == text);
    }

    /// Writes the text in UTF-8.
    friend std::ostream& operator<<(std::ostream& out, basic_path const& p) {
        return out << p.string();
    }

private:
    friend struct detail::path_text;

    /// A part of this path: already native, so a tilde in it is not expanded.
    basic_path part(string_type&& text) const {
        basic_path piece;
        piece.text_ = std::move(text);
        piece.expand_tilde_ = expand_tilde_;
        return piece;
    }

    template <class Name>
    basic_path& replace_last(Name const& name) {
        basic_path const root = root_path();
        basic_path replaced = *this == root ? root : parent_path();
        replaced /= name;
        swap(replaced);
        return *this;
    }

    string_type text_;
    bool expand_tilde_ = true;
};

/// Iterates over the elements of a path. The elements are paths that may outlive it.
template <class System, class Internal, class Traits>
class basic_path<System, Internal, Traits>::const_iterator {
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = basic_path;
    using difference_type = std::ptrdiff_t;
    using reference = basic_path;
    /// Holds the element that `->` is applied to.
    class pointer {
    public:
        basic_path const* operator->() const noexcept { return &element_; }

    private:
        friend const_iterator;
        explicit pointer(basic_path&& element) : element_(std::move(element)) {}
        basic_path element_;
    };

    const_iterator() = default;

    reference operator*() const { return path_->part(string_type(element_)); }
    pointer operator->() const { return pointer(**this); }

    const_iterator& operator++() {
        Traits::move_down(path_->text_, root_length(), position_, element_);
        return *this;
    }
    const_iterator operator++(int) {
        const_iterator before = *this;
        ++*this;
        return before;
    }
    const_iterator& operator--() {
        Traits::move_up(path_->text_, root_length(), position_, element_);
        return *this;
    }
    const_iterator operator--(int) {
        const_iterator before = *this;
        --*this;
        return before;
    }

    friend bool operator==(const_iterator const& a, const_iterator const& b) noexcept {
        return a.path_ == b.path_ && a.position_ == b.position_;
    }
    friend bool operator!=(const_iterator const& a, const_iterator const& b) noexcept {
        return !(a == b);
    }

private:
    friend basic_path;
    const_iterator(basic_path const& path, std::size_t position)
        : path_(&path), position_(position) {
        if (position == 0) element_ = Traits::extract_first_element(path.text_, root_length());
    }

    std::size_t root_length() const { return Traits::get_root_path_length(path_->text_); }

    basic_path const* path_ = nullptr;
    std::size_t position_ = 0;
    string_type element_;
};

using upath = basic_path<char, char16_t, detail::path_traits<char, char16_t>>;

}  // namespace ko::filesystem

/// The hash of the path's text; the flag for tildes is not part of it.
template <>
struct std::hash<ko::filesystem::upath> {
    std::size_t operator()(ko::filesystem::upath const& p) const noexcept {
        return std::hash<std::u16string>()(p.native());
    }
};

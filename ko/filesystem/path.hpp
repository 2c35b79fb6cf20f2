#pragma once

#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <utility>

#include <ko/filesystem/detail/path_traits.hpp>

namespace ko::filesystem {

/// A path as the operations take it: UTF-16 text in native form (a leading tilde expanded, single
/// slashes, none at the end but for the root), and whether what is appended has a leading tilde
/// expanded. Making one looks up nothing but home directories; "." and ".." stay.
///
/// - Joining a tilde that expands to nothing, for want of a home, leaves a slash at the end: "a/".
/// - A tilde that was kept is expanded by `copy`, `canonical`, `weakly_canonical`, `relative`,
///   `get_unc_path` and the option `create_symlinks`. Write "./~x" to name a file "~x" everywhere.
///
/// Unlike std::filesystem::path: joining an absolute path throws instead of replacing, an extension
/// comes without its dot, and two paths are equal when their texts are.
template <class Native, class Internal, class Traits>
class basic_path {
public:
    using string_type = std::basic_string<Internal>;
    using native_string_type = std::basic_string<Native>;

    /// The empty path.
    basic_path() = default;

    /// The path of `text`, brought into native form; a leading tilde is expanded when
    /// `expand_tilde`.
    explicit basic_path(string_type const& text, bool expand_tilde = true)
        : text_(Traits::make_native_form(text, expand_tilde)), expand_tilde_(expand_tilde) {}

    /// The path of a UTF-8 text.
    /// Throws InvalidArgument "Invalid UTF-8" when it isn't valid; path(): `text` with U+FFFD in
    /// place of each bad byte. Also, for a text beyond ASCII, in a thread whose converter could not
    /// be opened; path(): empty (see detail/encoding.hpp).
    static basic_path from_utf8(native_string_type const& text, bool expand_tilde = true) {
        return basic_path(Traits::from_native(text), expand_tilde);
    }

    string_type const& native() const noexcept { return text_; }
    bool expand_tilde() const noexcept { return expand_tilde_; }
    bool empty() const noexcept { return text_.empty(); }

    /// The text in UTF-8, as the system is given it: an unpaired surrogate is U+FFFD there, or the
    /// result is empty when it is a high one at the end.
    native_string_type string() const { return Traits::to_native(text_); }

    bool is_absolute() const { return Traits::is_absolute(text_); }

    /// "/" or empty.
    basic_path root_path() const { return part(Traits::extract_root_path(text_)); }
    /// The path without its root.
    basic_path relative_path() const { return part(Traits::extract_relative_path(text_)); }
    /// The path without its last element; empty for the root and for a single name.
    basic_path parent_path() const { return part(Traits::extract_parent_path(text_)); }
    /// The last element; "/" for the root.
    basic_path filename() const { return part(Traits::extract_filename(text_)); }
    /// The last element up to its last dot.
    basic_path stem() const { return part(Traits::extract_stem(text_)); }
    /// What follows the last dot of the last element, without the dot.
    basic_path extension() const { return part(Traits::extract_extension(text_)); }

    /// Drops the last element; the root becomes empty.
    basic_path& remove_filename() {
        Traits::remove_filename(text_);
        return *this;
    }

    /// Gives the last element the extension `ext`, with its dot or without; see
    /// `detail::replace_extension` for what is left as it is.
    /// Throws InvalidArgument "Invalid extension".
    basic_path& replace_extension(string_type const& ext) {
        Traits::replace_extension(text_, ext);
        return *this;
    }

    /// Appends `right` in native form behind a slash. An empty `right` adds nothing.
    /// Throws InvalidArgument "Absolute path not permitted" when `right` (its tilde expanded, if
    /// this path does that) begins with a slash and this path is not empty.
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

    friend bool operator==(basic_path const& a, basic_path const& b) noexcept {
        return a.text_ == b.text_;
    }
    friend bool operator!=(basic_path const& a, basic_path const& b) noexcept { return !(a == b); }
    /// By UTF-16 units.
    friend bool operator<(basic_path const& a, basic_path const& b) noexcept {
        return a.text_ < b.text_;
    }

    /// Writes the text in UTF-8.
    friend std::ostream& operator<<(std::ostream& out, basic_path const& p) {
        return out << p.string();
    }

private:
    /// A piece of this path: native already, so that a tilde in it is a name.
    basic_path part(string_type&& text) const {
        basic_path piece;
        piece.text_ = std::move(text);
        piece.expand_tilde_ = expand_tilde_;
        return piece;
    }

    string_type text_;
    bool expand_tilde_ = true;
};

using upath = basic_path<char, char16_t, detail::path_traits<char, char16_t>>;

}  // namespace ko::filesystem

/// The hash of the path's text; whether it expands tildes takes no part.
template <>
struct std::hash<ko::filesystem::upath> {
    std::size_t operator()(ko::filesystem::upath const& p) const noexcept {
        return std::hash<std::u16string>()(p.native());
    }
};

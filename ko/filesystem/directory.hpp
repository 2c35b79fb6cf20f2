#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

#include <boost/date_time/posix_time/ptime.hpp>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/file_status.hpp>
#include <ko/filesystem/options.hpp>
#include <ko/filesystem/path.hpp>

/// Listing a directory, or a directory and all below it.
///
/// for (directory_entry const& entry : directory_iterator(u"~/notes"))
///     if (entry.is_regular_file()) std::cout << entry.path() << '\n';
namespace ko::filesystem {

namespace detail {
class directory_listing;
}

/// What a listing found under one name. It is a copy of its own, which outlives the iterator.
///
/// Its path leads from the working directory if the listed path did; whatever asks the system does
/// so by this path, also where the name is not UTF-8.
class directory_entry {
public:
    /// An entry of nothing: its path is empty, its type `file_not_found`.
    directory_entry() = default;

    /// The path of the listed directory, a slash, and the name. A tilde in it is a name, also when
    /// the path is appended to.
    ///
    /// Throws InvalidArgument "Invalid UTF-8" when the name, or that of a directory it was found in,
    /// is not UTF-8; path(): the path with U+FFFD in place of each bad byte
    KO_FILESYSTEM_API upath const& path() const;

    /// Whether `path` gives a path rather than throwing.
    bool has_path() const noexcept { return bytes_.empty(); }

    /// The name as the system has it, without the directory.
    std::string const& native_name() const noexcept { return name_; }

    /// The type, one of `file_status`, a link not followed. What the listing said when it came to the
    /// entry; asked for by lstat on file systems that list names only, where an entry that is gone is
    /// `file_not_found`.
    ///
    /// Throws the class of the error number when that lstat fails; path(): the entry's
    KO_FILESYSTEM_API std::uint32_t type() const;

    /// What is at the path now, links followed (stat) or not (lstat). `file_not_found` as
    /// `ko::filesystem::status` says it.
    ///
    /// Throws the class of the error number for every other failure; path(): the entry's, unlike in
    /// `ko::filesystem::status`
    KO_FILESYSTEM_API file_status status() const;
    KO_FILESYSTEM_API file_status symlink_status() const;

    /// Whether this is a directory or a regular file, or a link that leads to one. The system is asked
    /// for links only. False for a dangling link, and for one that leads below a file.
    ///
    /// Throws the class of the error number for every other failure; path(): the entry's
    KO_FILESYSTEM_API bool is_directory() const;
    KO_FILESYSTEM_API bool is_regular_file() const;

    /// Throws as `type`.
    bool is_symlink() const { return type() == file_status::symlink_file; }

    /// The size in bytes of a regular file, or of the one that a link leads to (stat).
    ///
    /// Throws
    ///   FileIsDirectory   it is a directory; path(): the entry's
    ///   InvalidArgument   it is neither file nor directory; path(): the entry's
    ///   the class of the error number for every other failure, PathNotFound among them;
    ///   path(): the entry's
    KO_FILESYSTEM_API std::uint64_t file_size() const;

    /// The time of the last write, in UTC with microseconds, links followed (stat).
    ///
    /// Throws the class of the error number, PathNotFound among them; path(): the entry's
    KO_FILESYSTEM_API boost::posix_time::ptime last_write_time() const;

private:
    friend class detail::directory_listing;

    std::uint32_t followed_type() const;

    upath path_;
    std::string name_;
    std::string bytes_;  ///< the whole path, where that is not UTF-8; else empty
    std::uint32_t type_ = file_status::file_not_found;
};

namespace detail {

KO_FILESYSTEM_API bool is_at_end(directory_listing const* listing) noexcept;
KO_FILESYSTEM_API directory_entry const& current_entry(directory_listing const& listing) noexcept;
KO_FILESYSTEM_API void advance(directory_listing* listing);

/// What the two iterators have in common. As in std::filesystem they are input iterators: copies share
/// one listing, and an entry is good until it is advanced. One without a listing is the end; to
/// advance that does nothing, and it has no entry.
template <class Iterator>
class entry_iterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = directory_entry;
    using difference_type = std::ptrdiff_t;
    using pointer = directory_entry const*;
    using reference = directory_entry const&;

    /// The entry that `*it++` gives.
    class past_entry {
    public:
        explicit past_entry(directory_entry entry) : entry_(std::move(entry)) {}
        directory_entry const& operator*() const noexcept { return entry_; }

    private:
        directory_entry entry_;
    };

    reference operator*() const noexcept { return current_entry(*listing_); }
    pointer operator->() const noexcept { return &**this; }

    /// To the next entry. Throws as the iterator's class says; then it is at its end.
    Iterator& operator++() {
        advance(listing_.get());
        return static_cast<Iterator&>(*this);
    }
    past_entry operator++(int) {
        past_entry result(**this);
        ++*this;
        return result;
    }

    friend bool operator==(Iterator const& a, Iterator const& b) noexcept {
        return is_at_end(a.listing_.get()) ? is_at_end(b.listing_.get()) : a.listing_ == b.listing_;
    }
    friend bool operator!=(Iterator const& a, Iterator const& b) noexcept { return !(a == b); }

    /// An iterator is a range as well: from itself to the end.
    friend Iterator begin(Iterator it) noexcept { return it; }
    friend Iterator end(Iterator) noexcept { return {}; }

protected:
    entry_iterator() = default;
    ~entry_iterator() = default;
    entry_iterator(entry_iterator const&) = default;
    entry_iterator(entry_iterator&&) noexcept = default;
    entry_iterator& operator=(entry_iterator const&) = default;
    entry_iterator& operator=(entry_iterator&&) noexcept = default;

    std::shared_ptr<directory_listing> listing_;
};

}  // namespace detail

/// Goes through the entries of one directory, in the system's order, without "." and "..". Whether
/// entries that come or go meanwhile are met is the system's matter (readdir). The directory is open,
/// with close-on-exec, until the end.
class directory_iterator : public detail::entry_iterator<directory_iterator> {
public:
    /// The end.
    directory_iterator() = default;

    /// Opens `p`, a link to a directory also, and goes to its first entry.
    ///
    /// Throws, here and when it is advanced,
    ///   InvalidArgument     `p` is empty ("Empty Path not permitted"); path(): empty
    ///   PathNotFound        nothing is there; path(): `p`
    ///   NotDirectoryError   something else is there; path(): `p`
    ///   the class of the error number for every other failure to open or to read; path(): `p`
    KO_FILESYSTEM_API explicit directory_iterator(
        upath const& p, directory_option options = directory_option::none);
    /// The same for text, brought into native form first: leading ~ expanded, // collapsed.
    KO_FILESYSTEM_API explicit directory_iterator(
        std::u16string const& p, directory_option options = directory_option::none);
};

/// Goes through the entries of a directory and of all directories below it, each directory before what
/// is in it. One directory is open per level, and memory does not grow with the number of entries.
/// Directories are entered from the one above, so that a path may become longer than the system takes,
/// and a directory that is exchanged for a link is not followed.
///
/// A directory that is gone when it is to be entered, or is none any more, counts as empty. With
/// `follow_directory_symlinks` so does what a dangling link or a loop of links names; a link that leads
/// back to a directory being listed is listed and not entered.
class recursive_directory_iterator : public detail::entry_iterator<recursive_directory_iterator> {
public:
    /// The end.
    recursive_directory_iterator() = default;

    /// Opens `p`, a link to a directory also, and goes to its first entry.
    ///
    /// Throws, here and when it is advanced,
    ///   as directory_iterator for `p`
    ///   the class of the error number when a directory can't be opened or read, AccessDenied among
    ///   them, or SystemError with EMFILE in a tree deeper than the limit of descriptors;
    ///   path(): that directory
    KO_FILESYSTEM_API explicit recursive_directory_iterator(
        upath const& p, directory_option options = directory_option::none);
    /// The same for text, brought into native form first: leading ~ expanded, // collapsed.
    KO_FILESYSTEM_API explicit recursive_directory_iterator(
        std::u16string const& p, directory_option options = directory_option::none);

    /// How many directories lie between the one given and the entry: 0 for its own entries.
    KO_FILESYSTEM_API int depth() const noexcept;

    /// Whether the next advance enters the entry, if that is a directory.
    KO_FILESYSTEM_API bool recursion_pending() const noexcept;
    /// Makes the next advance, and no later one, pass the entry by.
    KO_FILESYSTEM_API void disable_recursion_pending() noexcept;

    /// Leaves the directory that the entry is in and goes to what follows that; to the end from depth 0.
    /// Throws as an advance does.
    KO_FILESYSTEM_API void pop();
};

}  // namespace ko::filesystem

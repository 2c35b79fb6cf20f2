#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <utility>

#include <boost/date_time/posix_time/ptime.hpp>

#include <ko/filesystem/config.hpp>
#include <ko/filesystem/detail/callback.hpp>
#include <ko/filesystem/detail/option_operators.hpp>
#include <ko/filesystem/exceptions/fsys_exception_base.hpp>
#include <ko/filesystem/file_status.hpp>
#include <ko/filesystem/path.hpp>

/// Listing a directory, or a directory tree.
///
/// for (directory_entry const& entry : directory_iterator(u"~/notes"))
///     if (entry.is_regular_file()) std::cout << entry.path() << '\n';
namespace ko::filesystem {

namespace detail {
class directory_listing;
}

/// Options of the directory iterators; combined with |.
enum class directory_option : unsigned int {
    none = 0,
    follow_directory_symlinks = 1,  ///< enter links to directories
    skip_permission_denied = 2,     ///< pass over a directory that may not be read
    read_status = 4,                ///< read the status of each entry (lstat) as it is listed
};

template <>
inline constexpr bool detail::is_option<directory_option> = true;

/// One entry of a listing. It is an independent copy, which may outlive the iterator.
///
/// Its path is relative if that of the listed directory is. Every member that queries the system
/// does so by the bytes of this path, also if they are not UTF-8.
///
/// If its status was read, by `directory_option::read_status` or by a constructor, `symlink_status`
/// and, for anything but a link, the members that follow links answer from it without a system call.
/// A status that couldn't be read is an exception in each of them: the class of the error number,
/// with the entry's path.
class directory_entry {
public:
    /// An empty entry: its path is empty, its type `file_not_found`.
    directory_entry() = default;

    /// The entry `p`, with its status read (lstat). A missing one has the type `file_not_found`.
    /// Its path is `p`; tildes in it are not expanded again.
    ///
    /// Throws the class of the error number for every other failure; path(): `p`
    KO_FILESYSTEM_API explicit directory_entry(upath const& p);
    /// The same for text, converted to native form first: leading ~ expanded, // collapsed.
    KO_FILESYSTEM_API explicit directory_entry(std::u16string const& p);

    /// The path of the listed directory, a slash, and the name. Tildes in it are not expanded, nor
    /// is that of a text appended to it.
    ///
    /// Throws InvalidArgument "Invalid UTF-8" if the name, or that of a directory it was found in,
    /// is not UTF-8; path(): the path with U+FFFD for each bad byte
    [[nodiscard]] KO_FILESYSTEM_API upath const& path() const;

    /// Whether `path` returns a path rather than throwing.
    [[nodiscard]] bool has_path() const noexcept { return has_path_; }

    /// The path in the bytes of the system, for system calls of the caller's own.
    [[nodiscard]] std::string const& native_path() const noexcept { return path8_; }

    /// The name in the bytes of the system, without the directory; "/" for the root.
    [[nodiscard]] std::string const& native_name() const noexcept { return name8_; }

    /// The type, one of `file_status`, a link not followed: that of the status, if it was read, else
    /// as reported when the entry was listed. On file systems that list names only, the result of
    /// lstat, with `file_not_found` for an entry that no longer exists.
    ///
    /// Throws the class of the error number if that lstat fails; path(): the entry's
    [[nodiscard]] KO_FILESYSTEM_API std::uint32_t type() const;

    /// The status of the path, links followed (stat) or not (lstat). `file_not_found` in the same
    /// cases as in `ko::filesystem::status`.
    ///
    /// Throws the class of the error number for every other failure; path(): the entry's, unlike in
    /// `ko::filesystem::status`
    [[nodiscard]] KO_FILESYSTEM_API file_status status() const;
    [[nodiscard]] KO_FILESYSTEM_API file_status symlink_status() const;

    /// Whether this is a directory or a regular file, or a link to one. Only links need a system
    /// call. False for a dangling link, and for one to a path below a file.
    ///
    /// Throws the class of the error number for every other failure; path(): the entry's
    [[nodiscard]] KO_FILESYSTEM_API bool is_directory() const;
    [[nodiscard]] KO_FILESYSTEM_API bool is_regular_file() const;

    /// Throws like `type`.
    [[nodiscard]] bool is_symlink() const { return type() == file_status::symlink_file; }

    /// The size of a regular file in bytes, links followed (stat).
    ///
    /// Throws
    ///   FileIsDirectory   it is a directory; path(): the entry's
    ///   InvalidArgument   it is neither a regular file nor a directory; path(): the entry's
    ///   the class of the error number for every other failure, including PathNotFound;
    ///   path(): the entry's
    [[nodiscard]] KO_FILESYSTEM_API std::uint64_t file_size() const;

    /// The time of the last write, in UTC with microseconds, links followed (stat).
    ///
    /// Throws the class of the error number, including PathNotFound; path(): the entry's
    [[nodiscard]] KO_FILESYSTEM_API boost::posix_time::ptime last_write_time() const;

private:
    friend class detail::directory_listing;

    /// In place of an error number: only the type in `status_` is known, perhaps.
    static constexpr int status_not_read = -1;

    file_status unfollowed_status(int other_absent = 0) const;
    file_status followed_status(int other_absent = 0) const;
    file_status existing_status() const;
    std::uint32_t followed_type() const;

    upath path_;
    std::string path8_, name8_;
    file_status status_;
    int status_error_ = 0;  ///< the number of the failed lstat
    bool has_path_ = true;
};

namespace detail {

KO_FILESYSTEM_API bool is_at_end(directory_listing const* listing) noexcept;
KO_FILESYSTEM_API directory_entry const& current_entry(directory_listing const& listing) noexcept;
KO_FILESYSTEM_API void advance(directory_listing* listing);
KO_FILESYSTEM_API directory_listing* share(directory_listing* listing) noexcept;
KO_FILESYSTEM_API void release(directory_listing* listing) noexcept;

/// Shares a listing, which the last one ends. Not a std::shared_ptr, for the same reason as with
/// `callback`.
class listing_pointer {
public:
    listing_pointer() = default;
    /// Takes over a share of `listing`.
    explicit listing_pointer(directory_listing* listing) noexcept : listing_(listing) {}
    listing_pointer(listing_pointer const& other) noexcept : listing_(share(other.listing_)) {}
    listing_pointer(listing_pointer&& other) noexcept
        : listing_(std::exchange(other.listing_, nullptr)) {}
    listing_pointer& operator=(listing_pointer other) noexcept {
        std::swap(listing_, other.listing_);
        return *this;
    }
    ~listing_pointer() { release(listing_); }

    directory_listing* get() const noexcept { return listing_; }

private:
    directory_listing* listing_ = nullptr;
};

/// The common part of both iterators. As in std::filesystem they are input iterators: copies share
/// one listing, and a reference to an entry is valid until the next advance. An iterator without a
/// listing is the end: advancing it does nothing, and it must not be dereferenced.
template <class Iterator>
class entry_iterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = directory_entry;
    using difference_type = std::ptrdiff_t;
    using pointer = directory_entry const*;
    using reference = directory_entry const&;

    /// The entry that `*it++` returns.
    class past_entry {
    public:
        explicit past_entry(directory_entry entry) : entry_(std::move(entry)) {}
        directory_entry const& operator*() const noexcept { return entry_; }

    private:
        directory_entry entry_;
    };

    reference operator*() const noexcept { return current_entry(*listing_.get()); }
    pointer operator->() const noexcept { return &**this; }

    /// Advances to the next entry. Throws what the constructor throws; the iterator is then at its
    /// end.
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
        directory_listing const *const one = a.listing_.get(), *const other = b.listing_.get();
        return is_at_end(one) ? is_at_end(other) : one == other;
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

    listing_pointer listing_;
};

}  // namespace detail

/// Called with the exception for a directory that can't be opened or read on, also for the one given
/// to the constructor: any function bool(FsysExceptionBase const&). Returns whether the listing goes on: that directory then counts as ended.
/// Otherwise the exception is thrown. What the handler throws passes unchanged, with the iterator at
/// its end.
///
/// auto const report = [&](FsysExceptionBase const& error) {
///     std::cerr << describe(error) << '\n';
///     return true;
/// };
/// recursive_directory_iterator all(u"~/notes", directory_option::none, report);
using directory_error_handler = detail::callback<FsysExceptionBase const&>;

/// Iterates over the entries of one directory, in the system's order, without "." and "..". Whether
/// it lists entries that are made or removed meanwhile depends on the system (readdir). The
/// directory is open, with close-on-exec, until the end.
class directory_iterator : public detail::entry_iterator<directory_iterator> {
public:
    /// The end.
    directory_iterator() = default;

    /// Opens `p`, a directory or a link to one, and advances to its first entry. An empty `on_error`
    /// is not called.
    ///
    /// Throws, as does each advance,
    ///   InvalidArgument     `p` is empty ("Empty Path not permitted"); path(): empty
    ///   PathNotFound        `p` does not exist; path(): `p`
    ///   NotDirectoryError   `p` is not a directory; path(): `p`
    ///   the class of the error number for every other failure to open or to read; path(): `p`
    KO_FILESYSTEM_API explicit directory_iterator(upath const& p,
                                                  directory_option options = directory_option::none,
                                                  directory_error_handler on_error = {});
    /// The same for text, converted to native form first: leading ~ expanded, // collapsed.
    KO_FILESYSTEM_API explicit directory_iterator(std::u16string const& p,
                                                  directory_option options = directory_option::none,
                                                  directory_error_handler on_error = {});
};

/// Iterates over the entries of a directory and of all directories below it, each directory before
/// its contents. One directory is open per level, and memory does not grow with the number of
/// entries. Directories are opened relative to their parent, so that paths may exceed the system's
/// limit, and a directory that is replaced by a link is not followed. The thread's converters are
/// opened first, which may fail when descriptors have run out.
///
/// A directory that no longer exists when it is entered, or no longer is a directory, counts as
/// empty. With `follow_directory_symlinks` so does a dangling link or a loop of links; a link back
/// to a directory that is being listed is listed, but not entered.
class recursive_directory_iterator : public detail::entry_iterator<recursive_directory_iterator> {
public:
    /// The end.
    recursive_directory_iterator() = default;

    /// Opens `p`, a directory or a link to one, and advances to its first entry. An empty `on_error`
    /// is not called.
    ///
    /// Throws, as does each advance,
    ///   what `directory_iterator` throws for `p`
    ///   the class of the error number if a directory can't be opened or read, such as
    ///   AccessDenied, or SystemError with EMFILE in a tree deeper than the limit of descriptors;
    ///   path(): that directory
    KO_FILESYSTEM_API explicit recursive_directory_iterator(
        upath const& p, directory_option options = directory_option::none,
        directory_error_handler on_error = {});
    /// The same for text, converted to native form first: leading ~ expanded, // collapsed.
    KO_FILESYSTEM_API explicit recursive_directory_iterator(
        std::u16string const& p, directory_option options = directory_option::none,
        directory_error_handler on_error = {});

    /// The depth of the entry: 0 for the entries of the directory given to the constructor.
    [[nodiscard]] KO_FILESYSTEM_API int depth() const noexcept;

    /// Whether the next advance enters the entry if that is a directory.
    [[nodiscard]] KO_FILESYSTEM_API bool recursion_pending() const noexcept;
    /// Makes the next advance, and only that one, not enter the entry.
    KO_FILESYSTEM_API void disable_recursion_pending() noexcept;

    /// Leaves the directory of the entry and advances to what follows it; from depth 0 to the end.
    /// Throws like an advance.
    KO_FILESYSTEM_API void pop();
};

}  // namespace ko::filesystem

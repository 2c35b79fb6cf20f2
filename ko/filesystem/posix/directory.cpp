#include <ko/filesystem/directory.hpp>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <ko/filesystem/detail/encoding.hpp>
#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/detail/path_algorithms.hpp>
#include <ko/filesystem/exceptions/invalid_argument.hpp>
#include <ko/filesystem/exceptions/throw.hpp>
#include <ko/filesystem/posix/directory_stream.hpp>
#include <ko/filesystem/posix/encoding.hpp>
#include <ko/filesystem/posix/file_identity.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/status_reader.hpp>
#include <ko/filesystem/posix/system_call.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem {

// The entry

namespace {

using detail::native_text;
using detail::throw_errno_exception;

}  // namespace

directory_entry::directory_entry(upath const& p) : path_(p.with_expand_tilde(false)) {
    path8_ = detail::system_path(path_.native()).string();
    name8_ = detail::path_traits<char, char>::extract_filename(path8_);
    status_ = detail::status_at(&::lstat, path8_.c_str(), ENOENT, path8_);
}
directory_entry::directory_entry(std::u16string const& p) : directory_entry(upath(p)) {}

upath const& directory_entry::path() const {
    if (!has_path_)
        throw detail::cloneable(
            InvalidArgument("Invalid UTF-8", detail::from_filesystem(path8_), {}));
    return path_;
}

file_status directory_entry::unfollowed_status(int other_absent) const {
    if (status_error_ == status_not_read)
        return detail::status_at(&::lstat, path8_.c_str(), other_absent, path8_);
    if (status_error_ == 0) return status_;
    if (status_error_ != other_absent) throw_errno_exception(status_error_, path8_);
    return {};
}

file_status directory_entry::followed_status(int other_absent) const {
    bool const is_link = status_.type == file_status::symlink_file;
    if (is_link || status_error_ == status_not_read)
        return detail::status_at(&::stat, path8_.c_str(), other_absent, path8_);
    return unfollowed_status(other_absent);
}

file_status directory_entry::existing_status() const {
    file_status const result = followed_status();
    if (result.type == file_status::file_not_found) throw_errno_exception(ENOENT, path8_);
    return result;
}

std::uint32_t directory_entry::type() const {
    bool const is_known = status_error_ == 0 || status_.type != file_status::file_type_unknown;
    return is_known ? status_.type : unfollowed_status().type;
}

file_status directory_entry::status() const { return followed_status(EINVAL); }
file_status directory_entry::symlink_status() const { return unfollowed_status(EINVAL); }

std::uint32_t directory_entry::followed_type() const {
    std::uint32_t const listed = type();
    return listed == file_status::symlink_file ? followed_status(ENOTDIR).type : listed;
}

bool directory_entry::is_directory() const {
    return followed_type() == file_status::directory_file;
}
bool directory_entry::is_regular_file() const {
    return followed_type() == file_status::regular_file;
}

std::uint64_t directory_entry::file_size() const {
    file_status const found = existing_status();
    if (found.type == file_status::regular_file) return found.size;
    bool const is_directory = found.type == file_status::directory_file;
    throw_errno_exception(is_directory ? EISDIR : EINVAL, path8_);
}

boost::posix_time::ptime directory_entry::last_write_time() const {
    return existing_status().last_write_time;
}

// The listing

namespace detail {

namespace {

bool has(directory_option options, directory_option one) noexcept {
    return (options & one) != directory_option::none;
}

/// Ends `path`, that of a directory, with one separator. Returns its length.
template <class CharT>
std::size_t begin_names(std::basic_string<CharT>& path) {
    if (!algorithm::is_separator(path.back()))
        path += pathname_traits<CharT>::PATHNAME_SEPARATOR_CHARACTER;
    return path.size();
}

/// Whether opening failed since the path is not a directory, or no longer one.
bool means_no_directory(int error) noexcept {
    return error == ENOENT || error == ENOTDIR || error == ELOOP;
}

}  // namespace

struct path_text {
    static std::u16string& of(upath& p) noexcept { return p.text_; }
};

/// The open directories, the last of which is being read, and the current entry. Its path begins with
/// that of each of them. At the end no directory is open.
class directory_listing {
public:
    directory_listing(std::u16string const& native, directory_option options,
                      directory_error_handler&& on_error, bool is_recursive);

    bool is_at_end() const noexcept { return levels_.empty(); }
    directory_entry const& entry() const noexcept { return entry_; }
    int depth() const noexcept { return static_cast<int>(levels_.size()) - 1; }

    void advance();
    void pop();

    bool recursion_pending = false;
    std::atomic<int> shares{1};

private:
    struct level {
        dir_stream stream;
        std::optional<file_identity> identity;  ///< only if links are followed
        bool has_path;
        // In the entry's path: the length of that of the directory, and where names begin.
        std::size_t path8_length, name8_start, name_start;
    };

    template <class Step>
    void step(Step to_next);
    void open(int base, char const* name8, int flags);
    bool is_skipped(int error) const noexcept;
    bool is_open(file_identity const& identity) const noexcept;
    void enter();
    void report(int error, std::string_view path8) const;
    void read();
    void take(::dirent const& found);
    void read_status(::dirent const& found);

    directory_option const options_;
    directory_error_handler const on_error_;
    bool const is_recursive_;
    std::vector<level> levels_;
    directory_entry entry_;
};

directory_listing::directory_listing(std::u16string const& native, directory_option options,
                                     directory_error_handler&& on_error, bool is_recursive)
    : options_(options), on_error_(std::move(on_error)), is_recursive_(is_recursive) {
    reject_empty_path(native);
    entry_.path8_ = system_path(native).string();
    entry_.path_ = upath(native, /*expand_tilde=*/false);
    posix::detail::open_converters();  // before the listing holds all descriptors
    open(AT_FDCWD, entry_.path8_.c_str(), 0);
    advance();
}

/// Advances to the next entry by `to_next`; a failure ends the listing.
template <class Step>
void directory_listing::step(Step to_next) try {
    to_next();
    recursion_pending = is_recursive_;
} catch (...) {
    levels_.clear();
    throw;
}

void directory_listing::advance() {
    step([this] {
        if (recursion_pending) enter();
        read();
    });
}

void directory_listing::pop() {
    step([this] {
        levels_.pop_back();
        read();
    });
}

/// Opens the entry's directory, which is `name8` in `base`, as the last level, unless it counts as
/// empty.
void directory_listing::open(int base, char const* name8, int flags) {
    level opened{};
    opened.stream = open_directory_stream(base, name8, flags);
    if (opened.stream == nullptr) {
        int const error = errno;
        bool const is_gone = !levels_.empty() && means_no_directory(error);
        if (!is_gone && !is_skipped(error)) report(error, entry_.path8_);
        return;
    }
    if (has(options_, directory_option::follow_directory_symlinks)) {
        struct stat found;
        if (::fstat(::dirfd(opened.stream.get()), &found) != 0) return report(errno, entry_.path8_);
        opened.identity.emplace(found);
        if (is_open(*opened.identity)) return;
    }
    opened.path8_length = entry_.path8_.size();
    opened.name8_start = begin_names(entry_.path8_);
    opened.has_path = entry_.has_path_;
    if (opened.has_path) opened.name_start = begin_names(path_text::of(entry_.path_));
    levels_.push_back(std::move(opened));
}

/// Whether `error`, of opening or reading a directory, is to be passed over. EPERM is what macOS
/// reports for directories that it protects.
bool directory_listing::is_skipped(int error) const noexcept {
    bool const is_denied = error == EACCES || error == EPERM;
    return is_denied && has(options_, directory_option::skip_permission_denied);
}

bool directory_listing::is_open(file_identity const& identity) const noexcept {
    return std::any_of(levels_.begin(), levels_.end(),
                       [&](level const& above) { return above.identity == identity; });
}

/// Opens the entry if it is a directory or, if links are followed, leads to one. If the listing
/// reports no types, opening the entry is the test.
void directory_listing::enter() {
    std::uint32_t const type = entry_.status_.type;
    bool const is_directory = type == file_status::directory_file;
    bool const is_link = type == file_status::symlink_file;
    bool const follows = has(options_, directory_option::follow_directory_symlinks);
    if (!is_directory && !(is_link && follows) && type != file_status::file_type_unknown) return;
    int const base = ::dirfd(levels_.back().stream.get());
    open(base, entry_.name8_.c_str(), is_directory || !follows ? O_NOFOLLOW : 0);
}

/// Throws the exception for `error` in the directory `path8`, unless the handler lets the listing go
/// on.
void directory_listing::report(int error, std::string_view path8) const {
    if (!on_error_) throw_errno_exception(error, path8);
    try {
        throw_errno_exception(error, path8);
    } catch (FsysExceptionBase const& failure) {
        if (!on_error_(failure)) throw;
    }
}

/// Advances to the next entry of the last level or, after its end, of those above.
void directory_listing::read() {
    for (; !levels_.empty(); levels_.pop_back()) {
        if (auto const* const found = next_entry(levels_.back().stream.get())) return take(*found);
        int const error = errno;
        // Linux reports ENOENT for an open directory that has been removed.
        if (error != 0 && error != ENOENT && !is_skipped(error))
            report(error, std::string_view(entry_.path8_).substr(0, levels_.back().path8_length));
    }
}

void directory_listing::take(::dirent const& found) {
    level const& directory = levels_.back();
    entry_.name8_ = found.d_name;
    entry_.path8_.resize(directory.name8_start);
    entry_.path8_ += entry_.name8_;
    entry_.has_path_ = directory.has_path;
    if (directory.has_path) {
        std::u16string& path = path_text::of(entry_.path_);
        path.resize(directory.name_start);
        entry_.has_path_ = append_from_filesystem(entry_.name8_, path);
    }
    read_status(found);
}

/// Sets the status of the entry, or its type alone. Relative to the open directory the system finds
/// it without a walk along the path.
void directory_listing::read_status(::dirent const& found) {
    entry_.status_ = {};
    entry_.status_error_ = directory_entry::status_not_read;
    if (has(options_, directory_option::read_status)) {
        int const base = ::dirfd(levels_.back().stream.get());
        struct stat status;
        int const error = examine_below(base, found.d_name, status);
        if (error == 0) entry_.status_ = to_file_status(status);
        entry_.status_error_ = error == ENOENT ? 0 : error;  // removed since: `file_not_found`
        if (entry_.status_error_ == 0) return;
    }
    entry_.status_.type = translated_type(static_cast<mode_t>(DTTOIF(found.d_type)));
}

bool is_at_end(directory_listing const* listing) noexcept {
    return listing == nullptr || listing->is_at_end();
}

directory_entry const& current_entry(directory_listing const& listing) noexcept {
    return listing.entry();
}

void advance(directory_listing* listing) {
    if (!is_at_end(listing)) listing->advance();
}

directory_listing* share(directory_listing* listing) noexcept {
    if (listing != nullptr) ++listing->shares;
    return listing;
}

void release(directory_listing* listing) noexcept {
    if (listing != nullptr && --listing->shares == 0) delete listing;
}

}  // namespace detail

// The iterators

namespace {

template <class Path>
detail::listing_pointer make_listing(Path const& p, directory_option options,
                                     directory_error_handler&& on_error, bool is_recursive) {
    return detail::listing_pointer(
        new detail::directory_listing(native_text(p), options, std::move(on_error), is_recursive));
}

}  // namespace

directory_iterator::directory_iterator(upath const& p, directory_option options,
                                       directory_error_handler on_error) {
    listing_ = make_listing(p, options, std::move(on_error), /*is_recursive=*/false);
}
directory_iterator::directory_iterator(std::u16string const& p, directory_option options,
                                       directory_error_handler on_error) {
    listing_ = make_listing(p, options, std::move(on_error), /*is_recursive=*/false);
}

recursive_directory_iterator::recursive_directory_iterator(upath const& p, directory_option options,
                                                           directory_error_handler on_error) {
    listing_ = make_listing(p, options, std::move(on_error), /*is_recursive=*/true);
}
recursive_directory_iterator::recursive_directory_iterator(std::u16string const& p,
                                                           directory_option options,
                                                           directory_error_handler on_error) {
    listing_ = make_listing(p, options, std::move(on_error), /*is_recursive=*/true);
}

int recursive_directory_iterator::depth() const noexcept { return listing_.get()->depth(); }
bool recursive_directory_iterator::recursion_pending() const noexcept {
    return listing_.get()->recursion_pending;
}
void recursive_directory_iterator::disable_recursion_pending() noexcept {
    listing_.get()->recursion_pending = false;
}
void recursive_directory_iterator::pop() {
    if (!detail::is_at_end(listing_.get())) listing_.get()->pop();
}

}  // namespace ko::filesystem

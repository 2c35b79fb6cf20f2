#include <ko/filesystem/posix/device_move.hpp>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <filesystem>
#include <system_error>
#include <vector>

#include <ko/filesystem/posix/file_identity.hpp>
#include <ko/filesystem/posix/foreign_rights.hpp>
#include <ko/filesystem/posix/status_reader.hpp>

namespace ko::filesystem::detail {

namespace fs = std::filesystem;

namespace {

/// Sets the last-write time of `to` to that of `from`, exact except for rounding by the file system
/// of `to`. The standard library's clock would wrap in 1677 and 2262, the limits of its
/// nanoseconds.
void transfer_write_time(fs::path const& from, fs::path const& to) {
    constexpr time_t coarsest = 2;  // seconds, of FAT
    struct stat source;
    struct stat target;
    int error = ::stat(from.c_str(), &source) == 0 ? 0 : errno;
    if (error == 0) {
        timespec const times[] = {{0, UTIME_OMIT}, write_time(source)};
        bool const is_set =
            ::utimensat(AT_FDCWD, to.c_str(), times, 0) == 0 && ::stat(to.c_str(), &target) == 0;
        error = is_set ? 0 : errno;
    }
    // A file system silently clamps a time that it can't store.
    if (error == 0) {
        time_t const lost = write_time(source).tv_sec - write_time(target).tv_sec;
        if (lost < -coarsest || lost > coarsest) error = EOVERFLOW;
    }
    if (error != 0)
        throw fs::filesystem_error("cannot preserve the last-write time", from, to,
                                   std::error_code(error, std::system_category()));
}

void transfer_write_times(fs::path const& from, fs::path const& to) {
    if (fs::is_regular_file(from) && fs::is_regular_file(to)) return transfer_write_time(from, to);
    if (!fs::is_directory(from) || !fs::is_directory(to)) return;
    // Real paths: for a link out of the tree, the time is set outside of the copy, too.
    fs::path const root = fs::weakly_canonical(from);
    for (fs::directory_entry const& entry : fs::recursive_directory_iterator(from)) {
        if (!entry.is_regular_file()) continue;
        fs::path const below = fs::weakly_canonical(entry).lexically_relative(root);
        transfer_write_time(entry, to / below);
    }
}

/// The error number of `step`, which takes an error code, or 0. Some standard libraries throw
/// anyway if reading a directory fails.
template <class Step>
int error_of(Step step) try {
    std::error_code error;
    step(error);
    return error.value();
} catch (fs::filesystem_error const& thrown) {
    return thrown.code().value();
}

/// Calls `action` with each entry below the directory `from8` and with the path that its copy has
/// below `to8`, until it sets `code`.
template <class Action>
void for_each_pair(std::string const& from8, std::string const& to8, std::error_code& code,
                   Action action) {
    for (fs::recursive_directory_iterator entry(from8, code), end; !code && entry != end;
         entry.increment(code)) {
        std::string const pair8 = to8 + entry->path().native().substr(from8.size());
        action(*entry, pair8.c_str());
        if (code) return;
    }
}

/// Sets `code` to EINVAL if copying the directory `from8` would write into it: if `to8` is in it,
/// or an existing directory below `to8` is one of those in it, by a link or a mount.
void refuse_own_target(std::string const& from8, std::string const& to8, std::error_code& code) {
    if (!fs::is_directory(fs::symlink_status(from8, code))) return;
    std::vector<file_identity> sources, targets;
    auto const add = [](auto& identities, char const* path8) {
        if (auto const identity = identify(path8)) identities.push_back(*identity);
    };
    auto const overlap = [&] {
        return std::any_of(targets.begin(), targets.end(), [&](file_identity const& target) {
            return std::binary_search(sources.begin(), sources.end(), target);
        });
    };
    add(sources, from8.c_str());
    int error = find_directories_above(to8, targets);
    if (error == 0 && overlap()) error = EINVAL;
    code.assign(error, std::system_category());
    if (code) return;
    for_each_pair(from8, to8, code, [&](fs::directory_entry const& entry, char const* pair8) {
        if (entry.is_symlink(code) || code || !entry.is_directory(code)) return;
        add(sources, entry.path().c_str());
        add(targets, pair8);
    });
    std::sort(sources.begin(), sources.end());
    if (!code && overlap()) code.assign(EINVAL, std::system_category());
}

/// The error number for a copy that can't replace `from8`, or 0. Also removes rights that the copy
/// must not have.
int settle_copy(char const* from8, char const* copy8) noexcept {
    struct stat source;
    struct stat copy;
    if (::lstat(from8, &source) != 0) return errno;
    if (::lstat(copy8, &copy) != 0) return errno == ENOENT || errno == ENOTDIR ? EIO : errno;
    if (!S_ISREG(source.st_mode)) return 0;
    if (!S_ISREG(copy.st_mode) || copy.st_size != source.st_size) return EIO;
    return drop_foreign_rights(source, copy, copy8);
}

/// Sets `code` unless all of `from8` is in its copy at `to8`, every file with its full length: some
/// standard libraries don't report a full disk, or treat a failed listing as complete.
void settle_copies(std::string const& from8, std::string const& to8, std::error_code& code) {
    bool const is_file = fs::is_regular_file(fs::symlink_status(from8, code));
    // A file copied onto a directory is put inside it.
    fs::path const copy =
        is_file && fs::is_directory(to8, code) ? to8 / fs::path(from8).filename() : fs::path(to8);
    code.assign(settle_copy(from8.c_str(), copy.c_str()), std::system_category());
    if (code || !fs::is_directory(fs::symlink_status(from8, code))) return;
    for_each_pair(from8, to8, code, [&](fs::directory_entry const& entry, char const* copy8) {
        code.assign(settle_copy(entry.path().c_str(), copy8), std::system_category());
    });
}

}  // namespace

int move_across_devices(std::string const& from8, std::string const& to8,
                        rename_options const& options) {
    constexpr auto copy_options = fs::copy_options::recursive | fs::copy_options::copy_symlinks;
    int error = error_of([&](auto& code) { refuse_own_target(from8, to8, code); });
    if (error == 0) error = error_of([&](auto& code) { fs::copy(from8, to8, copy_options, code); });
    if (error == 0) error = error_of([&](auto& code) { settle_copies(from8, to8, code); });
    if (error != 0) return error;
    if (options.preserve_last_write_time != 0) transfer_write_times(from8, to8);
    return error_of([&](auto& code) { fs::remove_all(from8, code); });
}

}  // namespace ko::filesystem::detail

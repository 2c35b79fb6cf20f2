#include <ko/filesystem/posix/device_move.hpp>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/exceptions/throw.hpp>
#include <ko/filesystem/posix/durability.hpp>
#include <ko/filesystem/posix/file_identity.hpp>
#include <ko/filesystem/posix/foreign_rights.hpp>
#include <ko/filesystem/posix/status_reader.hpp>
#include <ko/filesystem/posix/system_call.hpp>

namespace ko::filesystem::detail {

namespace fs = std::filesystem;

namespace {

/// The error number that `step` returns, or that of the standard library's exception from it.
template <class Step>
int error_of(Step step) try {
    return step();
} catch (fs::filesystem_error const& thrown) {
    return thrown.code().value();
}

bool is_directory_itself(fs::path const& path) {
    return fs::is_directory(fs::symlink_status(path));
}

/// Calls `action` with each entry below the directory `from8` and with the path that its copy has
/// below `to8`, until it returns an error number. Returns that, or 0.
template <class Action>
int for_each_pair(std::string const& from8, std::string const& to8, Action action) {
    for (fs::directory_entry const& entry : fs::recursive_directory_iterator(from8)) {
        std::string const pair8 = to8 + entry.path().native().substr(from8.size());
        int const error = action(entry, pair8);
        if (error != 0) return error;
    }
    return 0;
}

/// EINVAL if copying the directory `from8` would write into it: if `to8` is in it, or an existing
/// directory below `to8` is one of those in it, by a link or a mount. Else 0, or the error number
/// of a failure to find out.
int own_target_error(std::string const& from8, std::string const& to8) {
    if (!is_directory_itself(from8)) return 0;
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
    if (error != 0) return error;
    if (overlap()) return EINVAL;
    error = for_each_pair(from8, to8, [&](fs::directory_entry const& entry, auto const& pair8) {
        if (entry.is_symlink() || !entry.is_directory()) return 0;
        add(sources, entry.path().c_str());
        add(targets, pair8.c_str());
        return 0;
    });
    if (error != 0) return error;
    std::sort(sources.begin(), sources.end());
    return overlap() ? EINVAL : 0;
}

/// EIO if a byte can be read from `file8`, whose size is given as 0. Else 0, or the error number of
/// a failure to find out.
int emptiness_error(char const* file8) noexcept {
    file_descriptor const file(uninterrupted(
        [=] { return ::open(file8, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC); }));
    if (file.get() == -1) return errno;
    char byte;
    ssize_t const bytes = uninterrupted([&] { return ::read(file.get(), &byte, 1); });
    if (bytes == -1) return errno;
    return bytes == 0 ? 0 : EIO;
}

/// An entry and its copy, links not followed.
struct copied_pair {
    struct stat source;
    struct stat copy;

    /// Returns the error number of a failure, or 0: EIO if there is no copy.
    int examine(char const* from8, char const* copy8) noexcept {
        if (::lstat(from8, &source) != 0) return errno;
        if (::lstat(copy8, &copy) == 0) return 0;
        return means_absent(errno) ? EIO : errno;
    }

    /// 0 if the copy can replace the source, else the error number: some standard libraries don't
    /// report a full disk, or treat a failed listing as complete, or copy nothing of a file that
    /// reports no size.
    int check(char const* from8) const noexcept {
        if (!S_ISREG(source.st_mode)) return 0;
        if (!S_ISREG(copy.st_mode) || copy.st_size != source.st_size) return EIO;
        return source.st_size == 0 ? emptiness_error(from8) : 0;
    }

    int drop_rights(char const* copy8) const noexcept {
        return S_ISREG(source.st_mode) ? drop_foreign_rights(source, copy, copy8) : 0;
    }
};

/// The copy of `from8` that a move to `to8` makes. The members return error numbers.
class device_copy {
public:
    device_copy(std::string const& from8, std::string const& to8)
        : from8_(from8), to8_(to8), copy8_(to8) {}

    int make() const {
        constexpr auto options = fs::copy_options::recursive | fs::copy_options::copy_symlinks;
        std::error_code code;
        fs::copy(from8_, to8_, options, code);
        return code.value();
    }

    /// Settles the whole copy.
    int settle() {
        is_file_ = fs::is_regular_file(fs::symlink_status(from8_));
        // A file copied onto a directory is put inside it.
        if (is_file_ && fs::is_directory(to8_)) copy8_ = to8_ / fs::path(from8_).filename();
        int const error = settle(from8_.c_str(), copy8_);
        if (error != 0 || !is_directory_itself(from8_)) return error;
        return for_each_pair(from8_, copy8_,
                             [&](fs::directory_entry const& entry, std::string const& copy8) {
                                 return settle(entry.path().c_str(), copy8);
                             });
    }

    /// Writes the copy, which has been settled, to the disk.
    int sync() const {
        if (is_file_) {
            int const error = sync_file(copy8_.c_str());
            return error != 0 ? error : sync_directory_of(copy8_);
        }
        for (auto const& [device, place8] : file_systems_) {
            int const error = sync_file_system(place8.c_str());
            if (error == ENOTSUP) return sync_each();
            if (error != 0) return error;
        }
        return 0;
    }

private:
    /// What an entry that has been copied still needs: a check, and fewer rights.
    int settle(char const* from8, std::string const& copy8) {
        copied_pair pair;
        int error = pair.examine(from8, copy8.c_str());
        if (error == 0) error = pair.check(from8);
        if (error == 0) error = pair.drop_rights(copy8.c_str());
        if (error == 0) note_file_system(pair.copy, copy8);
        return error;
    }

    void note_file_system(struct stat const& copy, std::string const& copy8) {
        auto const is_same = [&](auto const& known) { return known.first == copy.st_dev; };
        if (std::any_of(file_systems_.begin(), file_systems_.end(), is_same)) return;
        // A link would lead elsewhere.
        fs::path place = copy8;
        if (S_ISLNK(copy.st_mode)) place.remove_filename();
        file_systems_.emplace_back(copy.st_dev, place.empty() ? "." : place.native());
    }

    int sync_each() const {
        // A link would lead elsewhere; its directory has all that it is.
        auto const sync_one = [](fs::directory_entry const& entry, std::string const& copy8) {
            return entry.is_symlink() ? 0 : sync_file(copy8.c_str());
        };
        int error = is_directory_itself(from8_) ? sync_file(copy8_.c_str()) : 0;
        if (error == 0 && is_directory_itself(from8_))
            error = for_each_pair(from8_, copy8_, sync_one);
        return error != 0 ? error : sync_directory_of(copy8_);
    }

    std::string const& from8_;
    std::string const& to8_;
    std::string copy8_;
    bool is_file_ = false;
    /// Those that the copy is in: the device, and a path. A link or a mount below an existing
    /// target can lead to further ones.
    std::vector<std::pair<dev_t, std::string>> file_systems_;
};

/// What a copy that failed with EIO lacks.
class missing_part {
public:
    missing_part(std::string const& from8, std::string const& to8) : to8_(to8) {
        add(from8.c_str(), to8.c_str());
        error_of([&] {  // of what it can't look at, nothing is known to be missing
            return for_each_pair(from8, to8, [&](fs::directory_entry const& entry, auto& copy8) {
                add(entry.path().c_str(), copy8.c_str());
                return 0;
            });
        });
    }

    bool exceeds_file_size_limit() const noexcept {
        ::rlimit limit;
        return ::getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY &&
               largest_file_ > limit.rlim_cur;
    }

    bool exceeds_free_space() const {
        // The target is missing if not even that could be made.
        return !fits(to8_) || !fits(fs::path(to8_).parent_path().native());
    }

private:
    void add(char const* from8, char const* copy8) noexcept {
        copied_pair pair;
        if (::lstat(from8, &pair.source) != 0 || !S_ISREG(pair.source.st_mode)) return;
        auto const size = static_cast<std::uintmax_t>(pair.source.st_size);
        largest_file_ = std::max(largest_file_, size);
        bool const is_copied = ::lstat(copy8, &pair.copy) == 0 && S_ISREG(pair.copy.st_mode);
        bytes_ +=
            size - (is_copied ? std::min(size, static_cast<std::uintmax_t>(pair.copy.st_size)) : 0);
    }

    bool fits(std::string const& place8) const noexcept {
        struct statvfs found;
        if (::statvfs(place8.c_str(), &found) != 0) return true;  // as far as is known
        return found.f_bavail != 0 && found.f_bavail >= bytes_ / std::max(found.f_frsize, 1ul);
    }

    std::string const& to8_;
    std::uintmax_t largest_file_ = 0;
    std::uintmax_t bytes_ = 0;
};

/// What EIO in a copy means: standard libraries report it for every failed write, and so does the
/// check of lengths.
int cause_of_failed_write(std::string const& from8, std::string const& to8) {
    missing_part const missing(from8, to8);
    if (missing.exceeds_file_size_limit()) return EFBIG;
    return missing.exceeds_free_space() ? ENOSPC : EIO;
}

/// Sets the last-write time of `to` to that of `from`, exact except for rounding by the file system
/// of `to`. The standard library's clock would wrap in 1677 and 2262, the limits of its
/// nanoseconds.
void transfer_write_time(fs::path const& from, fs::path const& to) {
    constexpr time_t coarsest = 2;  // seconds, of FAT
    struct stat source;
    struct stat target;
    int error = examine(&::stat, from.c_str(), source);
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
        throw cloneable(fs::filesystem_error("cannot preserve the last-write time", from, to,
                                             std::error_code(error, std::system_category())));
}

void transfer_write_times(fs::path const& from, fs::path const& to) try {
    if (fs::is_regular_file(from) && fs::is_regular_file(to)) return transfer_write_time(from, to);
    if (!fs::is_directory(from) || !fs::is_directory(to)) return;
    // Real paths: for a link out of the tree, the time is set outside of the copy, too.
    fs::path const root = fs::weakly_canonical(from);
    for (fs::directory_entry const& entry : fs::recursive_directory_iterator(from)) {
        if (!entry.is_regular_file()) continue;
        fs::path const below = fs::weakly_canonical(entry).lexically_relative(root);
        transfer_write_time(entry, to / below);
    }
} catch (fs::filesystem_error const& thrown) {
    throw cloneable(thrown);
}

/// The entry at which the removal of `from` stopped, which the standard library doesn't say: the
/// first one that its listing still has.
fs::path first_remaining(fs::path from) {
    for (std::error_code failed; fs::is_directory(fs::symlink_status(from, failed));) {
        fs::directory_iterator const entry(from, failed);
        if (failed || entry == fs::directory_iterator()) break;
        from = entry->path();
    }
    return from;
}

void remove_source(std::string const& from8, std::string const& to8) {
    int const error = error_of([&] {
        std::error_code code;
        fs::remove_all(from8, code);
        return code.value();
    });
    if (error != 0) throw_errno_exception(error, first_remaining(from8).native(), to8);
}

}  // namespace

int move_across_devices(std::string const& from8, std::string const& to8,
                        bool preserve_last_write_time) {
    int error = error_of([&] { return own_target_error(from8, to8); });
    if (error != 0) return error;
    device_copy copy(from8, to8);
    error = error_of([&] { return copy.make(); });
    if (error == 0) error = error_of([&] { return copy.settle(); });
    if (error == EIO) error = cause_of_failed_write(from8, to8);
    if (error != 0) return error;
    if (preserve_last_write_time) transfer_write_times(from8, to8);
    error = error_of([&] { return copy.sync(); });
    if (error == 0) remove_source(from8, to8);
    return error;
}

}  // namespace ko::filesystem::detail

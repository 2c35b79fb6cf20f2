#include <ko/filesystem/posix/status_reader.hpp>

#include <fcntl.h>

#include <cerrno>
#include <cstdint>
#include <limits>
#include <optional>

#include <boost/bind/bind.hpp>
#include <boost/date_time/posix_time/ptime.hpp>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/exceptions.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem::detail {

using boost::posix_time::ptime;

#ifdef __APPLE__
timespec const& access_time(struct stat const& found) noexcept { return found.st_atimespec; }
timespec const& write_time(struct stat const& found) noexcept { return found.st_mtimespec; }
timespec const& status_change_time(struct stat const& found) noexcept { return found.st_ctimespec; }
#else
timespec const& access_time(struct stat const& found) noexcept { return found.st_atim; }
timespec const& write_time(struct stat const& found) noexcept { return found.st_mtim; }
timespec const& status_change_time(struct stat const& found) noexcept { return found.st_ctim; }
#endif

std::int64_t julian_microseconds(ptime const& time) {
    return (time - ptime(ptime::time_rep_type(std::int64_t{0}))).ticks();
}

ptime ptime_of(std::int64_t count) {
    // The values above represent not_a_date_time and infinity.
    constexpr std::int64_t last = std::numeric_limits<std::int64_t>::max() - 2;
    if (count > last - julian_microseconds_of_epoch) return boost::posix_time::pos_infin;
    return ptime(ptime::time_rep_type(count + julian_microseconds_of_epoch));
}

ptime to_ptime(timespec const& time) {
    std::int64_t count = 0;
    bool const overflow =
        __builtin_mul_overflow(std::int64_t{time.tv_sec}, std::int64_t{1'000'000}, &count) ||
        __builtin_add_overflow(count, time.tv_nsec / 1000, &count);
    if (!overflow) return ptime_of(count);
    return time.tv_sec < 0 ? boost::posix_time::neg_infin : boost::posix_time::pos_infin;
}

std::uint32_t translated_type(mode_t mode) noexcept {
    switch (mode & S_IFMT) {
        case S_IFIFO: return file_status::fifo_file;
        case S_IFCHR: return file_status::character_file;
        case S_IFDIR: return file_status::directory_file;
        case S_IFBLK: return file_status::block_file;
        case S_IFREG: return file_status::regular_file;
        case S_IFLNK: return file_status::symlink_file;
        case S_IFSOCK: return file_status::socket_file;
        default: return file_status::file_type_unknown;
    }
}

bool means_absent(int error) noexcept { return error == ENOENT || error == ENOTDIR; }

bool exists_by_stat(char const* path8) {
    struct stat found;
    if (::stat(path8, &found) == 0) return true;
    if (means_absent(errno)) return false;
    throw_errno_exception(errno, path8, {});
}

bool exists_natively(char const* path8, struct stat& found) {
    if (::stat(path8, &found) == 0) return true;
    int const error = errno;
    if (means_absent(error) || error == EINVAL) return false;
    throw_errno_exception(error, path8, {});
}

bool exists_natively(char const* path8) {
    struct stat found;
    return exists_natively(path8, found);
}

bool exists_native(std::u16string const& native) {
    if (native.empty()) return false;
    try {
        return exists_by_stat(system_path(native).c_str());
    } catch (PathNotFound const&) {
        return false;
    } catch (InvalidArgument const&) {
        return false;
    }
}

file_status to_file_status(struct stat const& found) {
    file_status result;
    result.type = translated_type(found.st_mode);
    result.permissions = found.st_mode & 0xFFF;
    result.last_access_time = to_ptime(access_time(found));
    result.last_write_time = to_ptime(write_time(found));
    result.last_status_change_time = to_ptime(status_change_time(found));
    result.size = static_cast<std::uint64_t>(found.st_size);
    return result;
}

bool examine(stat_function stat_or_lstat, char const* path8, struct stat& found) {
    errno = 0;
    if (stat_or_lstat(path8, &found) == 0) return true;
    if (errno == ENOENT) return false;
    throw_errno_exception(errno, {}, {});
}

namespace {

/// Reads the status from `stat_call` into `result`. Returns the error number of a failure to
/// report.
template <class StatCall>
std::optional<int> read_by(StatCall const& stat_call, file_status& result) {
    struct stat found;
    errno = 0;
    if (stat_call(&found) != 0) {
        int const error = errno;
        return error == ENOENT ? std::nullopt : std::optional<int>(error);
    }
    result = to_file_status(found);
    return std::nullopt;
}

}  // namespace

file_status status_from_stat(boost::function<int(struct stat*)> const& stat_call) {
    file_status result;
    if (auto const error = read_by(stat_call, result)) throw_errno_exception(*error, {}, {});
    return result;
}

file_status read_status(stat_function stat_or_lstat, char const* path8) {
    return status_from_stat(boost::bind(stat_or_lstat, path8, boost::placeholders::_1));
}

std::optional<int> try_status(stat_function stat_or_lstat, char const* path8, file_status& result) {
    return read_by([=](struct stat* found) { return stat_or_lstat(path8, found); }, result);
}

std::optional<int> try_status_below(int base, char const* name8, file_status& result) {
    auto const stat_call = [=](struct stat* found) {
        return ::fstatat(base, name8, found, AT_SYMLINK_NOFOLLOW);
    };
    return read_by(stat_call, result);
}

file_status_light status_light_by_stat(char const* path8) {
    struct stat found;
    if (::stat(path8, &found) != 0) {
        if (errno == ENOENT || errno == EINVAL) return {};
        throw_errno_exception(errno, path8, {});
    }
    file_status_light result;
    result.type = found.st_mode & file_status::file_type_mask;
    result.last_write_time = to_ptime(write_time(found));
    result.size = static_cast<std::uint64_t>(found.st_size);
    return result;
}

}  // namespace ko::filesystem::detail

#include <ko/filesystem/posix/status_reader.hpp>

#include <fcntl.h>

#include <cerrno>
#include <cstdint>
#include <limits>

#include <boost/date_time/posix_time/ptime.hpp>
#include <boost/function.hpp>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/posix/system_call.hpp>
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

int examine(stat_function call, char const* path8, struct stat& found) noexcept {
    errno = 0;
    return errno_of(call(path8, &found));
}

int examine_below(int base, char const* name8, struct stat& found) noexcept {
    return errno_of(::fstatat(base, name8, &found, AT_SYMLINK_NOFOLLOW));
}

bool means_absent(int error) noexcept { return error == ENOENT || error == ENOTDIR; }

bool exists_by_stat(char const* path8) {
    struct stat found;
    int const error = examine(&::stat, path8, found);
    if (error != 0 && !means_absent(error)) throw_errno_exception(error, path8);
    return error == 0;
}

bool exists_at(stat_function call, char const* path8, struct stat& found) {
    int const error = examine(call, path8, found);
    if (error == 0) return true;
    if (means_absent(error) || error == EINVAL) return false;
    throw_errno_exception(error, path8);
}

bool exists_at(stat_function call, std::u16string const& native, struct stat& found) {
    if (native.empty()) return false;
    int error = 0;
    system_path const path8(native, error);
    return error == 0 && exists_at(call, path8.c_str(), found);
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

file_status status_at(stat_function call, char const* path8, int other_absent,
                      std::string_view reported) {
    struct stat found;
    int const error = examine(call, path8, found);
    if (error == 0) return to_file_status(found);
    if (error == ENOENT || error == other_absent) return {};
    throw_errno_exception(error, reported);
}

file_status status_from_stat(boost::function<int(struct stat*)> const& stat_call) {
    struct stat found;
    errno = 0;
    if (stat_call(&found) == 0) return to_file_status(found);
    if (errno == ENOENT) return {};
    throw_errno_exception(errno, {});
}

}  // namespace ko::filesystem::detail

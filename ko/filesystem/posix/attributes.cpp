#include <ko/filesystem/attributes.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <limits>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/exceptions/throw.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/status_reader.hpp>
#include <ko/filesystem/posix/system_call.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem {

namespace {

using boost::posix_time::ptime;
using detail::native_text;
using detail::throw_errno_exception;

struct stat found_at(char const* path8) {
    struct stat found;
    if (::stat(path8, &found) != 0) throw_errno_exception(errno, path8);
    return found;
}

std::uint64_t file_size_impl(std::u16string const& native) {
    detail::reject_empty_path(native);
    detail::system_path const path8(native);
    struct stat const found = found_at(path8.c_str());
    if (!S_ISREG(found.st_mode))
        throw_errno_exception(S_ISDIR(found.st_mode) ? EISDIR : EINVAL, path8.c_str());
    return static_cast<std::uint64_t>(found.st_size);
}

void resize_file_impl(std::u16string const& native, std::uint64_t size) {
    detail::reject_empty_path(native);
    detail::system_path const path8(native);
    if (size > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max()))
        throw_errno_exception(EFBIG, path8.c_str());
    auto const resize = [&] { return ::truncate(path8.c_str(), static_cast<off_t>(size)); };
    if (detail::uninterrupted(resize) != 0) throw_errno_exception(errno, path8.c_str());
}

std::uint64_t hard_link_count_impl(std::u16string const& native) {
    detail::reject_empty_path(native);
    return static_cast<std::uint64_t>(found_at(detail::system_path(native).c_str()).st_nlink);
}

ptime last_write_time_impl(std::u16string const& native) {
    detail::reject_empty_path(native);
    return detail::to_ptime(detail::write_time(found_at(detail::system_path(native).c_str())));
}

timespec to_timespec(ptime const& time) {
    constexpr std::int64_t microseconds = 1'000'000;
    std::int64_t const count = detail::julian_microseconds(time);
    std::int64_t seconds = count / microseconds, rest = count % microseconds;
    if (rest < 0) --seconds, rest += microseconds;
    timespec result{};
    result.tv_sec =
        static_cast<std::time_t>(seconds - detail::julian_microseconds_of_epoch / microseconds);
    result.tv_nsec = static_cast<long>(rest * 1000);
    return result;
}

void last_write_time_impl(std::u16string const& native, ptime const& time) {
    detail::reject_empty_path(native);
    if (time.is_special()) detail::throw_invalid_argument("Time not valid");
    detail::system_path const path8(native);
    timespec times[] = {{}, to_timespec(time)};
    times[0].tv_nsec = UTIME_OMIT;
    if (::utimensat(AT_FDCWD, path8.c_str(), times, 0) != 0)
        throw_errno_exception(errno, path8.c_str());
}

}  // namespace

std::uint64_t file_size(upath const& p) { return file_size_impl(native_text(p)); }
std::uint64_t file_size(std::u16string const& p) { return file_size_impl(native_text(p)); }

void resize_file(upath const& p, std::uint64_t size) { resize_file_impl(native_text(p), size); }
void resize_file(std::u16string const& p, std::uint64_t size) {
    resize_file_impl(native_text(p), size);
}

std::uint64_t hard_link_count(upath const& p) { return hard_link_count_impl(native_text(p)); }
std::uint64_t hard_link_count(std::u16string const& p) {
    return hard_link_count_impl(native_text(p));
}

ptime last_write_time(upath const& p) { return last_write_time_impl(native_text(p)); }
ptime last_write_time(std::u16string const& p) { return last_write_time_impl(native_text(p)); }

void last_write_time(upath const& p, ptime const& time) {
    last_write_time_impl(native_text(p), time);
}
void last_write_time(std::u16string const& p, ptime const& time) {
    last_write_time_impl(native_text(p), time);
}

}  // namespace ko::filesystem

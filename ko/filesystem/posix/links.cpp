#include <ko/filesystem/posix/links.hpp>

#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

#include <boost/numeric/conversion/cast.hpp>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/exceptions/path_errors.hpp>
#include <ko/filesystem/exceptions/throw.hpp>
#include <ko/filesystem/posix/encoding.hpp>
#include <ko/filesystem/posix/status_reader.hpp>
#include <ko/filesystem/posix/system_call.hpp>

namespace ko::filesystem::detail {

namespace {

constexpr std::size_t buffer_step = 1024;

std::size_t checked_length(ssize_t length) {
    try {
        return boost::numeric_cast<std::size_t>(length);
    } catch (boost::numeric::bad_numeric_cast const&) {
        throw cloneable(SystemError({}, {}, ENAMETOOLONG));
    }
}

}  // namespace

std::string read_link_bytes(char const* path8) {
    std::string buffer;
    for (;;) {
        buffer.resize(buffer.size() + buffer_step);
        ssize_t const result = ::readlink(path8, buffer.data(), buffer.size());
        if (result == -1) throw_errno_exception(errno, path8);
        std::size_t const length = checked_length(result);
        if (length == buffer.size()) continue;  // possibly truncated
        buffer.resize(length);
        return buffer;
    }
}

std::u16string read_link_target(char const* path8) {
    return from_filesystem_strict(read_link_bytes(path8));
}

void make_link_by(int (*call)(char const*, char const*), char const* target8, char const* link8) {
    // Deliberately without the path, unlike for a dangling link, which the call reports.
    if (exists_by_stat(link8)) throw_errno_exception(EEXIST, {});
    // Some systems make a link with an empty text.
    int const error = *target8 == '\0' ? ENOENT : errno_of(call(target8, link8));
    // The target comes first in the report, since it is what was to be stored or linked.
    if (error != 0) throw_errno_exception(error, target8, link8);
}

}  // namespace ko::filesystem::detail

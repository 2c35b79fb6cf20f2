#include <ko/filesystem/posix/link_reader.hpp>

#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

#include <boost/numeric/conversion/cast.hpp>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/exceptions/path_errors.hpp>
#include <ko/filesystem/exceptions/throw.hpp>
#include <ko/filesystem/posix/encoding.hpp>

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

}  // namespace ko::filesystem::detail

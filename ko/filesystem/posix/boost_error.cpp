#include <ko/filesystem/posix/boost_error.hpp>

#include <algorithm>
#include <iterator>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/posix/fault_path.hpp>

namespace ko::filesystem::detail {

namespace {

std::string low_bytes(std::u16string const& path) {
    std::string bytes;
    bytes.reserve(path.size());
    std::transform(path.begin(), path.end(), std::back_inserter(bytes),
                   [](char16_t unit) { return static_cast<char>(unit & 0xFF); });
    return bytes;
}

}  // namespace

void throw_error_code_exception(int error, std::u16string const& path1,
                                std::u16string const& path2) {
    if (error != 0) throw_errno_exception(error, low_bytes(path1), low_bytes(path2));
}

void throw_copy_error_code_exception(int error, std::u16string const& from,
                                     std::u16string const& to) {
    switch (blame_for_copy(error, from)) {
        case blame::source: return throw_error_code_exception(error, from, {});
        case blame::destination: return throw_error_code_exception(error, to, {});
        case blame::both: return throw_error_code_exception(error, from, to);
    }
}

}  // namespace ko::filesystem::detail

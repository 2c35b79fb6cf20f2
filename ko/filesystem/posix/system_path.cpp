#include <ko/filesystem/posix/system_path.hpp>

#include <algorithm>
#include <cerrno>

#include <ko/filesystem/detail/encoding.hpp>
#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/detail/text_scan.hpp>

namespace ko::filesystem::detail {

namespace {

bool has_zero(std::string const& path8) noexcept { return path8.find('\0') != path8.npos; }

}  // namespace

void reject_zero(std::string const& path8) {
    if (has_zero(path8)) throw_errno_exception(EINVAL, path8);
}

system_path::system_path(std::u16string const& native) {
    convert(native);
    reject_zero(converted_);
}

system_path::system_path(std::u16string const& native, int& error) {
    convert(native);
    error = has_zero(converted_) ? EINVAL : 0;
    if (error != 0) text_ = "";
}

void system_path::convert(std::u16string const& native) {
    if (native.size() < sizeof short_ && is_ascii_without_zero<char16_t>(native)) {
        *std::copy(native.begin(), native.end(), short_) = '\0';
    } else {
        converted_ = to_filesystem(native);
        text_ = converted_.c_str();
    }
}

}  // namespace ko::filesystem::detail

#include <ko/filesystem/posix/system_path.hpp>

#include <algorithm>
#include <cerrno>

#include <ko/filesystem/detail/encoding.hpp>
#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/detail/text_scan.hpp>

namespace ko::filesystem::detail {

void reject_zero(std::string const& path8) {
    if (path8.find('\0') != path8.npos) throw_errno_exception(EINVAL, path8, {});
}

system_path::system_path(std::u16string const& native) {
    if (native.size() < sizeof short_ && is_ascii_without_zero<char16_t>(native)) {
        *std::copy(native.begin(), native.end(), short_) = '\0';
        return;
    }
    converted_ = to_filesystem(native);
    reject_zero(converted_);
    text_ = converted_.c_str();
}

}  // namespace ko::filesystem::detail

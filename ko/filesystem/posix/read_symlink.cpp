#include <ko/filesystem/read_symlink.hpp>

#include <ko/filesystem/posix/links.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem {

namespace {

std::u16string read_symlink_impl(std::u16string const& native) {
    if (native.empty()) return {};
    return detail::read_link_target(detail::system_path(native).c_str());
}

}  // namespace

upath read_symlink(upath const& p) { return upath(read_symlink_impl(p.native())); }
std::u16string read_symlink(std::u16string const& p) {
    return read_symlink_impl(detail::native_text(p));
}

}  // namespace ko::filesystem

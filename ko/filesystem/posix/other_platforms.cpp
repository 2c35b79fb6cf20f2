#include <ko/filesystem/other_platforms.hpp>

#include <ko/filesystem/detail/encoding.hpp>
#include <ko/filesystem/exceptions/throw.hpp>
#include <ko/filesystem/posix/encoding.hpp>

namespace ko::filesystem {

namespace {

std::u16string round_trip(std::u16string const& text) {
    return detail::from_filesystem_strict(detail::to_filesystem(text));
}

}  // namespace

upath get_unc_path(upath const& p, bool) { return upath(round_trip(p.native())); }
std::u16string get_unc_path(std::u16string const& p, bool) { return round_trip(p); }

void create_shortcut(upath const& from, upath const& to) {
    create_shortcut(from.native(), to.native());
}
void create_shortcut(std::u16string const& from, std::u16string const& to) {
    static_cast<void>(detail::to_filesystem(from));
    static_cast<void>(detail::to_filesystem(to));
    detail::throw_invalid_operation_exception();
}

}  // namespace ko::filesystem

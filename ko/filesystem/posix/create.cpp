#include <ko/filesystem/create.hpp>

#include <cerrno>
#include <string>
#include <string_view>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/posix/directory_maker.hpp>
#include <ko/filesystem/posix/link_maker.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem {

namespace {

using detail::native_text;

void reject_root(std::string_view path8) {
    if (path8 == "/") detail::throw_errno_exception(EEXIST, path8);
}

void create_directory_impl(std::u16string const& native) {
    detail::system_path const path8(native);
    reject_root(path8.c_str());
    int const error = detail::make_directory(path8.c_str());
    if (error != 0) detail::throw_errno_exception(error, path8.c_str());
}

void create_directories_impl(std::u16string const& native) {
    detail::reject_empty_path(native);
    detail::system_path const path8(native);
    reject_root(path8.c_str());
    detail::make_directories(path8.string());
}

bool ensure_directories_impl(std::u16string const& native) {
    detail::reject_empty_path(native);
    return detail::ensure_directories_at(detail::system_path(native).string());
}

}  // namespace

void create_directory(upath const& p) { create_directory_impl(native_text(p)); }
void create_directory(std::u16string const& p) { create_directory_impl(native_text(p)); }

void create_directories(upath const& p) { create_directories_impl(native_text(p)); }
void create_directories(std::u16string const& p) { create_directories_impl(native_text(p)); }

bool ensure_directories(upath const& p) { return ensure_directories_impl(native_text(p)); }
bool ensure_directories(std::u16string const& p) { return ensure_directories_impl(native_text(p)); }

void create_hard_link(upath const& existing, upath const& link) {
    detail::make_hard_link(native_text(existing), native_text(link));
}
void create_hard_link(std::u16string const& existing, std::u16string const& link) {
    detail::make_hard_link(native_text(existing), native_text(link));
}

void create_symlink(upath const& target, upath const& link, unsigned int type) {
    detail::make_link(native_text(target), native_text(link), type);
}
void create_symlink(std::u16string const& target, std::u16string const& link, unsigned int type) {
    detail::make_link(native_text(target), native_text(link), type);
}

}  // namespace ko::filesystem

#include <ko/filesystem/create.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <string_view>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/exceptions/throw.hpp>
#include <ko/filesystem/posix/directory_maker.hpp>
#include <ko/filesystem/posix/links.hpp>
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

void create_hard_link_impl(std::u16string const& existing, std::u16string const& link) {
    detail::reject_empty_path(existing);
    detail::reject_empty_path(link);
    auto const without_following = [](char const* existing8, char const* link8) {
        return ::linkat(AT_FDCWD, existing8, AT_FDCWD, link8, 0);
    };
    detail::system_path const existing8(existing), link8(link);
    detail::make_link_by(without_following, existing8.c_str(), link8.c_str());
}

void create_symlink_impl(std::u16string const& target, std::u16string const& link,
                         unsigned int type) {
    detail::reject_empty_path(target);
    detail::reject_empty_path(link);
    if (type != file_status::file_type_auto && type != file_status::regular_file &&
        type != file_status::directory_file)
        detail::throw_invalid_argument("Unsupported file type");
    detail::system_path const target8(target), link8(link);
    detail::make_link_by(&::symlink, target8.c_str(), link8.c_str());
}

}  // namespace

void create_directory(upath const& p) { create_directory_impl(native_text(p)); }
void create_directory(std::u16string const& p) { create_directory_impl(native_text(p)); }

void create_directories(upath const& p) { create_directories_impl(native_text(p)); }
void create_directories(std::u16string const& p) { create_directories_impl(native_text(p)); }

bool ensure_directories(upath const& p) { return ensure_directories_impl(native_text(p)); }
bool ensure_directories(std::u16string const& p) { return ensure_directories_impl(native_text(p)); }

void create_hard_link(upath const& existing, upath const& link) {
    create_hard_link_impl(native_text(existing), native_text(link));
}
void create_hard_link(std::u16string const& existing, std::u16string const& link) {
    create_hard_link_impl(native_text(existing), native_text(link));
}

void create_symlink(upath const& target, upath const& link, unsigned int type) {
    create_symlink_impl(native_text(target), native_text(link), type);
}
void create_symlink(std::u16string const& target, std::u16string const& link, unsigned int type) {
    create_symlink_impl(native_text(target), native_text(link), type);
}

}  // namespace ko::filesystem

#include <ko/filesystem/current_path.hpp>

#include <unistd.h>

#include <cerrno>
#include <mutex>
#include <string>

#include <ko/filesystem/detail/current_directory.hpp>
#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/detail/path_algorithms.hpp>
#include <ko/filesystem/detail/path_composition.hpp>
#include <ko/filesystem/posix/encoding.hpp>
#include <ko/filesystem/posix/handles.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem {

namespace {

std::mutex& cwd_mutex() {
    static std::mutex mutex;
    return mutex;
}

}  // namespace

std::string detail::get_cwd_mt() {
    std::lock_guard<std::mutex> const lock(cwd_mutex());
    char buffer[1024];
    if (::getcwd(buffer, sizeof buffer) != nullptr) return buffer;
    if (errno != ERANGE) throw_errno_exception(errno, {}, {});
    posix::detail::malloc_text const longer(::getcwd(nullptr, 0));
    if (longer == nullptr) throw_errno_exception(errno, {}, {});
    return longer.get();
}

bool detail::set_cwd_mt(std::string const& path8) {
    reject_zero(path8);
    std::lock_guard<std::mutex> const lock(cwd_mutex());
    if (::chdir(path8.c_str()) != 0) throw_errno_exception(errno, path8, {});
    return true;
}

std::u16string get_current_path() {
    std::u16string path = detail::from_filesystem_strict(detail::get_cwd_mt());
    if (detail::algorithm::is_native_form<char16_t>(path, /*expand_tilde=*/true)) return path;
    return detail::make_native_form(path, /*expand_tilde=*/true);
}

bool change_current_path(upath const& p) {
    return !p.empty() && detail::set_cwd_mt(detail::system_path(p.native()).string());
}
bool change_current_path(std::u16string const& p) {
    return !p.empty() && detail::set_cwd_mt(detail::system_path(detail::native_text(p)).string());
}

}  // namespace ko::filesystem

#include <ko/filesystem/current_path.hpp>

#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>
#include <string>

#include <ko/filesystem/detail/current_directory.hpp>
#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/detail/path_algorithms.hpp>
#include <ko/filesystem/detail/path_composition.hpp>
#include <ko/filesystem/posix/encoding.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem {

namespace {

/// Never destroyed, since fork calls its handlers until the process ends.
std::mutex& cwd_mutex() noexcept {
    alignas(std::mutex) static unsigned char memory[sizeof(std::mutex)];
    static std::mutex& mutex = *::new (memory) std::mutex;
    return mutex;
}

void lock_cwd() noexcept { cwd_mutex().lock(); }
void unlock_cwd() noexcept { cwd_mutex().unlock(); }

// The thread that calls fork, the only one that the child has, holds the lock meanwhile: no thread
// that the child lacks has it. When the library is loaded, no thread can be inside yet.
[[maybe_unused]] bool const survives_fork = [] {
#ifdef __APPLE__
    // macOS would call the handlers of an unloaded library, so it stays loaded.
    Dl_info self;
    if (::dladdr(reinterpret_cast<void const*>(&lock_cwd), &self) != 0)
        ::dlopen(self.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
#endif
    return ::pthread_atfork(&lock_cwd, &unlock_cwd, &unlock_cwd) == 0;
}();

}  // namespace

std::string detail::get_cwd_mt() {
    std::lock_guard<std::mutex> const lock(cwd_mutex());
    char buffer[1024];
    if (::getcwd(buffer, sizeof buffer) != nullptr) return buffer;
    if (errno != ERANGE) throw_errno_exception(errno, {});
    auto const free = [](char* text) { std::free(text); };
    std::unique_ptr<char, decltype(free)> const longer(::getcwd(nullptr, 0), free);
    if (longer == nullptr) throw_errno_exception(errno, {});
    return longer.get();
}

bool detail::set_cwd_mt(std::string const& path8) {
    reject_zero(path8);
    std::lock_guard<std::mutex> const lock(cwd_mutex());
    if (::chdir(path8.c_str()) != 0) throw_errno_exception(errno, path8);
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

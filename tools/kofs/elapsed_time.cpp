#include "elapsed_time.hpp"

#include <sys/ioctl.h>
#include <sys/select.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <system_error>
#include <utility>

#include "columns.hpp"

namespace kofs {

namespace {

volatile std::sig_atomic_t caught_signal = 0;
std::atomic<bool> was_interrupted{false};

/// Writes to the terminal. Failures are ignored: the line is not essential.
void put(std::string const& text) {
    for (std::size_t done = 0; done != text.size();) {
        ssize_t const count = ::write(STDERR_FILENO, text.data() + done, text.size() - done);
        if (count < 0 && errno != EINTR) return;
        if (count > 0) done += static_cast<std::size_t>(count);
    }
}

/// The columns of the window, less one: a full line would be continued on the next.
std::size_t terminal_width() {
    winsize size{};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0 ? size.ws_col - 1u
                                                                              : 79;
}

/// Erases what the window shows from the cursor on: more than one line, if it has become narrower.
/// Empty if the terminal knows no escape sequences.
char const* erasing() {
    char const* const terminal = std::getenv("TERM");
    return terminal == nullptr || std::strcmp(terminal, "dumb") == 0 ? "" : "\x1b[J";
}

/// A line from a background job would garble what the user types.
bool in_foreground() { return ::tcgetpgrp(STDERR_FILENO) == ::getpgrp(); }

}  // namespace

std::string clock_text(long seconds) {
    char text[40];
    if (seconds < 3600)
        std::snprintf(text, sizeof text, "%ld:%02ld", seconds / 60, seconds % 60);
    else
        std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", seconds / 3600, seconds / 60 % 60,
                      seconds % 60);
    return text;
}

std::unique_ptr<elapsed_time> elapsed_time::shown(std::string const& command) {
    return made(command, /*has_line=*/true, /*is_interruptible=*/false, {});
}

std::unique_ptr<elapsed_time> elapsed_time::shown(std::string const& command, details more) {
    bool const has_line = more.text != nullptr;
    return made(command, has_line, /*is_interruptible=*/true, std::move(more));
}

std::unique_ptr<elapsed_time> elapsed_time::made(std::string const& command, bool has_line,
                                                 bool is_interruptible, details more) {
    if (::isatty(STDERR_FILENO) == 0) return nullptr;
    try {
        return std::unique_ptr<elapsed_time>(
            new elapsed_time(command, has_line, is_interruptible, std::move(more)));
    } catch (std::system_error const&) {
        return nullptr;
    }
}

bool elapsed_time::interrupted() noexcept { return was_interrupted; }

elapsed_time::elapsed_time(std::string const& command, bool has_line, bool is_interruptible,
                           details more)
    : command_(command),
      has_line_(has_line),
      is_interruptible_(is_interruptible),
      more_(std::move(more)) {
    if (::pipe(stop_) != 0) throw std::system_error(errno, std::generic_category());
    if (stop_[0] >= FD_SETSIZE) {
        ::close(stop_[0]);
        ::close(stop_[1]);
        throw std::system_error(EMFILE, std::generic_category());
    }
    sigset_t blocked;
    sigemptyset(&blocked);
    for (int const signal : ending_signals) sigaddset(&blocked, signal);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &mask_before_);
    struct sigaction action {};
    action.sa_handler = [](int number) { caught_signal = number; };
    action.sa_mask = blocked;
    struct sigaction* before = actions_before_;
    for (int const signal : ending_signals) {
        ::sigaction(signal, nullptr, before);
        // Ignored signals stay ignored, as under nohup.
        if (before->sa_handler != SIG_IGN) ::sigaction(signal, &action, nullptr);
        ++before;
    }
    try {
        thread_ = std::thread([this] { run(); });
    } catch (...) {
        restore();
        throw;
    }
}

elapsed_time::~elapsed_time() {
    ::close(stop_[1]);
    stop_[1] = -1;
    thread_.join();
    restore();
}

/// Undoes what the constructor changed. A pending signal then ends the process.
void elapsed_time::restore() noexcept {
    for (int const end : stop_)
        if (end != -1) ::close(end);
    struct sigaction const* before = actions_before_;
    for (int const signal : ending_signals) ::sigaction(signal, before++, nullptr);
    ::pthread_sigmask(SIG_SETMASK, &mask_before_, nullptr);
}

void elapsed_time::run() {
    using clock = std::chrono::steady_clock;
    auto const start = clock::now();
    auto end = clock::time_point::max();  // after an interrupt
    for (long next = 1;;) {
        auto const now = clock::now();
        if (now >= end) end_process(SIGINT);
        auto const left = std::chrono::duration_cast<std::chrono::nanoseconds>(
            std::min(start + std::chrono::seconds(next), end) - now);
        if (left.count() <= 0) {
            draw(next++);
            continue;
        }
        timespec wait;
        wait.tv_sec = static_cast<std::time_t>(left.count() / 1'000'000'000);
        wait.tv_nsec = static_cast<long>(left.count() % 1'000'000'000);
        fd_set ends;
        FD_ZERO(&ends);
        FD_SET(stop_[0], &ends);
        int const found = ::pselect(stop_[0] + 1, &ends, nullptr, nullptr, &wait, &mask_before_);
        if (caught_signal == SIGINT && is_interruptible_ && !was_interrupted) {
            caught_signal = 0;
            was_interrupted = true;
            end = clock::now() + std::chrono::seconds(1);
            draw(next - 1);
        }
        if (caught_signal != 0) end_process(caught_signal);
        if (found > 0) break;
    }
    erase();
}

/// Leaves the cursor at the beginning of the line: a "^C" after its end could be on the next one.
void elapsed_time::draw(long seconds) {
    if (!has_line_ || !in_foreground()) return;
    std::size_t const width = terminal_width();
    std::string line = (width < 40 ? "" : "kofs " + command_ + ": ") + clock_text(seconds);
    if (line.size() > width) line.clear();
    std::size_t const left = width - line.size();
    if (was_interrupted)
        line += left < 8 ? "" : ", ending";
    else if (more_.text)
        line += more_.text(left);
    std::size_t const drawn = std::exchange(drawn_, columns(line));
    std::size_t const rest = std::min(std::max(drawn, drawn_), width) - drawn_;
    put('\r' + (erasing() + line) + std::string(rest, ' ') + '\r');
}

void elapsed_time::erase() {
    std::size_t const drawn = std::exchange(drawn_, 0);
    if (drawn == 0 || !in_foreground()) return;
    std::string const with = erasing();
    put('\r' + (with.empty() ? std::string(std::min(drawn, terminal_width()), ' ') + '\r' : with));
}

void elapsed_time::end_process(int signal) {
    erase();
    if (more_.end) more_.end();
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    ::sigaction(signal, &action, nullptr);
    ::pthread_sigmask(SIG_SETMASK, &mask_before_, nullptr);
    std::raise(signal);
}

}  // namespace kofs

#pragma once

#include <csignal>
#include <cstddef>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <thread>

namespace kofs {

/// "1:05" or "1:00:05".
std::string clock_text(long seconds);

/// Shows the elapsed time in a line on standard error, from the first second on. The line is erased
/// by the destructor, or before a signal ends the process.
///
/// Until then the calling thread must not write to standard error. Signals that end the process are
/// blocked in it and delivered to the thread that draws the line, between two writes.
class elapsed_time {
public:
    /// Both are called by the thread that draws the line.
    struct details {
        /// What the line shows after the time, in at most the given columns. Empty for no line.
        std::function<std::string(std::size_t columns)> text;
        /// Called before a signal ends the process.
        std::function<void()> end;
    };

    /// Null if standard error is not a terminal or no thread can be started.
    static std::unique_ptr<elapsed_time> shown(std::string const& command);
    /// For a command that ends by itself once `interrupted` is true. SIGINT ends the process if that
    /// takes longer than a second, or if there is a second one.
    static std::unique_ptr<elapsed_time> shown(std::string const& command, details more);

    /// Whether there was a SIGINT.
    static bool interrupted() noexcept;

    elapsed_time(elapsed_time const&) = delete;
    elapsed_time& operator=(elapsed_time const&) = delete;
    ~elapsed_time();

private:
    elapsed_time(std::string const& command, bool has_line, bool is_interruptible, details more);
    static std::unique_ptr<elapsed_time> made(std::string const& command, bool has_line,
                                              bool is_interruptible, details more);

    void run();
    void draw(long seconds);
    void erase();
    void end_process(int signal);
    void restore() noexcept;

    static constexpr int ending_signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

    std::string const command_;
    bool const has_line_;
    bool const is_interruptible_;
    details const more_;
    std::size_t drawn_ = 0;  ///< columns of the line
    int stop_[2] = {-1, -1};
    sigset_t mask_before_;
    struct sigaction actions_before_[std::size(ending_signals)];
    std::thread thread_;
};

}  // namespace kofs

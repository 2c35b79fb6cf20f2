#pragma once

#include <csignal>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <thread>

namespace kofs {

/// Shows the elapsed time in a line on standard error, from the first second on. The line is erased
/// by the destructor, or before a signal ends the process.
///
/// Until then the calling thread must not write to standard error. Signals that end the process are
/// blocked in it and delivered to the thread that draws the line, between two writes.
class elapsed_time {
public:
    /// Returns what the line shows after the time; called by the thread that draws it.
    using details = std::function<std::string()>;

    /// Null if standard error is not a terminal or no thread can be started.
    static std::unique_ptr<elapsed_time> shown(std::string const& command);
    /// For a command that ends by itself once `interrupted` is true: only the second SIGINT ends the
    /// process. Without `more` no line is shown.
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
    bool is_interruptible_;
    details const more_;
    std::string line_;  ///< what the terminal shows
    int stop_[2] = {-1, -1};
    sigset_t mask_before_;
    struct sigaction actions_before_[std::size(ending_signals)];
    std::thread thread_;
};

}  // namespace kofs

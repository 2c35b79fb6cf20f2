#pragma once

#include <csignal>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <thread>

namespace kofs {

/// Shows on standard error, from the first second on, how long something has been taking, in a line
/// that is gone when the object is, or when a signal ends the process.
///
/// Until then the calling thread must not write to standard error, and has the signals that end the
/// process blocked: they go to the thread that writes the line, which lets them in between two
/// writes only.
class elapsed_time {
public:
    /// What the line shows after the time, asked for by the thread that writes it.
    using details = std::function<std::string()>;

    /// A new one, or null when standard error is no terminal or there is no thread to be had.
    static std::unique_ptr<elapsed_time> shown(std::string const& command);
    /// One for a command that ends by itself once `interrupted` says so: SIGINT ends the process only
    /// the second time. Without `more` there is no line.
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

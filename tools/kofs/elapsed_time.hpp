#pragma once

#include <csignal>
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
    /// A new one, or null when standard error is no terminal or there is no thread to be had.
    static std::unique_ptr<elapsed_time> shown(std::string const& command);

    elapsed_time(elapsed_time const&) = delete;
    elapsed_time& operator=(elapsed_time const&) = delete;
    ~elapsed_time();

private:
    explicit elapsed_time(std::string const& command);

    void run();
    void draw(long seconds);
    void erase();
    void end_process(int signal);
    void restore() noexcept;

    static constexpr int ending_signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

    std::string command_;
    std::string line_;  ///< what the terminal shows
    int stop_[2] = {-1, -1};
    sigset_t mask_before_;
    struct sigaction actions_before_[std::size(ending_signals)];
    std::thread thread_;
};

}  // namespace kofs

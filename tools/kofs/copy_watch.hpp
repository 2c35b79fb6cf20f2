#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include <ko/filesystem.hpp>

#include "command.hpp"
#include "elapsed_time.hpp"

namespace kofs {

/// Shows how far a copy is, as its observer: in a line on a terminal, as lines of JSON with --progress,
/// entry by entry with --verbose. Ctrl-C on a terminal ends the copy between two entries.
class copy_watch {
public:
    /// Counts what is to be copied, where that is to be shown.
    copy_watch(arguments const& given, std::u16string const& from);
    copy_watch(copy_watch const&) = delete;
    copy_watch& operator=(copy_watch const&) = delete;
    ~copy_watch();

    /// Empty when there is nothing to watch.
    ko::filesystem::copy_observer observer();

    /// After an interrupted copy: says what was copied, and ends the process by the signal.
    void end_if_interrupted();

private:
    bool step(ko::filesystem::copy_step const& next);
    void count(std::u16string const& from);
    void print_lines();
    std::string line() const;

    arguments const& given_;
    bool const is_verbose_;
    mutable std::mutex lock_;  ///< of what follows
    bool is_counted_ = false;
    std::uint64_t all_entries_ = 0, all_bytes_ = 0;
    std::uint64_t entries_ = 0, bytes_ = 0;
    std::string path_;
    bool has_ended_ = false;
    std::condition_variable ended_;
    std::thread printer_;
    std::unique_ptr<elapsed_time> terminal_;  // the last, which is the first to go
};

}  // namespace kofs

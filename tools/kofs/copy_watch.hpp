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

/// Observes a copy and shows its progress: in a line on a terminal, as lines of JSON with
/// --progress, entry by entry with --verbose. Ctrl-C on a terminal ends the copy between entries.
class copy_watch {
public:
    /// Counts what will be copied, if the count is shown.
    copy_watch(arguments const& given, std::u16string const& from);
    copy_watch(copy_watch const&) = delete;
    copy_watch& operator=(copy_watch const&) = delete;
    ~copy_watch();

    /// Empty if there is nothing to show.
    ko::filesystem::copy_observer observer();

    /// After an interrupted copy: prints what was copied and ends the process by the signal.
    void end_if_interrupted();

private:
    bool step(ko::filesystem::copy_step const& next);
    void count(std::u16string const& from);
    void print_lines();
    std::string line() const;

    arguments const& given_;
    bool const is_verbose_;
    mutable std::mutex lock_;  ///< guards the members below
    bool is_counted_ = false;
    std::uint64_t all_entries_ = 0, all_bytes_ = 0;
    std::uint64_t entries_ = 0, bytes_ = 0;
    std::string path_;
    bool has_ended_ = false;
    std::condition_variable ended_;
    std::thread printer_;
    std::unique_ptr<elapsed_time> terminal_;  // declared last, so destroyed first
};

}  // namespace kofs

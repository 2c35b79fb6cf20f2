#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <ko/filesystem.hpp>

#include "command.hpp"
#include "elapsed_time.hpp"

namespace kofs {

/// Watches a copy. Shows its progress: in a line on a terminal, as lines of JSON with --progress,
/// entry by entry with --verbose. Refuses to copy something else, or nothing, without being asked
/// to. Ctrl-C on a terminal ends the copy after the entry at hand, or within it after a second.
class copy_watch {
public:
    /// Counts what will be copied, if the count is shown.
    copy_watch(arguments const& given, std::u16string const& from);
    copy_watch(copy_watch const&) = delete;
    copy_watch& operator=(copy_watch const&) = delete;
    ~copy_watch();

    using action = std::function<void(ko::filesystem::copy_observer const&)>;

    /// Runs `copy` with the observer to use. A failure is thrown as an `entry_failure`. Returns the
    /// number of entries copied.
    std::uint64_t run(action const& copy);

private:
    bool step(ko::filesystem::copy_step const& next);
    void check(ko::filesystem::copy_step const& next) const;
    bool will_copy(ko::filesystem::copy_step const& next) const;
    bool is_kept(ko::filesystem::copy_step const& next) const;
    void count(std::u16string const& from);
    void print_lines();
    std::string line(std::size_t width) const;
    std::uint64_t bytes_now() const;
    void settle();
    void end();
    void end_if_interrupted();
    void abandon();
    void say_interrupted() const;

    /// What is being copied.
    struct current_entry {
        std::u16string from, to;
        bool is_link = false;
        bool is_copied = false;    ///< rather than left out
        bool is_made = false;      ///< a file that did not exist before
        std::uint64_t size = 0;    ///< of a regular file
        std::uint64_t before = 0;  ///< size of the file to be replaced
        std::string target8;       ///< a file being written
    };

    arguments const& given_;
    bool const is_verbose_;
    mutable std::mutex lock_;  ///< guards the members below
    bool is_counted_ = false;
    std::uint64_t all_entries_ = 0, all_bytes_ = 0;
    std::uint64_t entries_ = 0, bytes_ = 0;  ///< copied or left out
    std::uint64_t copied_entries_ = 0, copied_bytes_ = 0;
    current_entry current_;
    std::vector<std::u16string> left_out_;  ///< links to links
    bool has_ended_ = false;
    std::condition_variable ended_;
    std::thread printer_;
    std::unique_ptr<elapsed_time> terminal_;  // declared last, so destroyed first
};

}  // namespace kofs

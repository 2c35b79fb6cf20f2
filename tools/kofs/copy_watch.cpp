#include "copy_watch.hpp"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <iostream>
#include <utility>

#include <nlohmann/json.hpp>

#include "report.hpp"

namespace kofs {

namespace fs = ko::filesystem;

namespace {

std::string size_text(double bytes) {
    char const* const units[] = {"B", "kB", "MB", "GB", "TB", "PB", "EB"};
    std::size_t unit = 0;
    for (; bytes >= 1000 && unit + 1 != std::size(units); ++unit) bytes /= 1000;
    char text[32];
    std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, units[unit]);
    return text;
}

/// `done` may exceed `all`, since the targets of followed links were not counted.
int per_cent(std::uint64_t done, std::uint64_t all) {
    if (all == 0) return 100;
    return static_cast<int>(100.0 * static_cast<double>(std::min(done, all)) /
                            static_cast<double>(all));
}

}  // namespace

copy_watch::copy_watch(arguments const& given, std::u16string const& from)
    : given_(given), is_verbose_(given.has("verbose")) {
    if (given.has("progress") && !given.json) throw usage_error("--progress is for --json");
    if (is_verbose_ && given.json) throw usage_error("--verbose is not for --json");
    if (!given.json)
        terminal_ = elapsed_time::shown(
            given.command, is_verbose_ ? elapsed_time::details() : [this] { return line(); });
    if (given.has("progress")) printer_ = std::thread([this] { print_lines(); });
    if ((terminal_ != nullptr && !is_verbose_) || given.has("progress")) count(from);
}

copy_watch::~copy_watch() {
    {
        std::lock_guard<std::mutex> const guard(lock_);
        has_ended_ = true;
    }
    ended_.notify_one();
    if (printer_.joinable()) printer_.join();
}

fs::copy_observer copy_watch::observer() {
    if (terminal_ == nullptr && !printer_.joinable() && !is_verbose_) return {};
    return [this](fs::copy_step const& next) { return step(next); };
}

bool copy_watch::step(fs::copy_step const& next) {
    std::string const path = printed(next.from);
    {
        std::lock_guard<std::mutex> const guard(lock_);
        entries_ = next.entries;
        bytes_ = next.bytes;
        path_ = path;
    }
    if (terminal_ != nullptr && elapsed_time::interrupted()) return false;
    if (is_verbose_) std::cout << path << " -> " << printed(next.to) << std::endl;
    return true;
}

void copy_watch::count(std::u16string const& from) {
    auto const add = [this](fs::file_status const& found) {
        std::lock_guard<std::mutex> const guard(lock_);
        ++all_entries_;
        if (found.type == fs::file_status::regular_file) all_bytes_ += found.size;
    };
    try {
        add(fs::symlink_status(from));
        if (given_.has("recursive") && fs::is_directory(from))
            for (auto const& entry : fs::recursive_directory_iterator(
                     from, fs::directory_option::skip_permission_denied)) {
                if (terminal_ != nullptr && elapsed_time::interrupted()) break;
                add(entry.symlink_status());
            }
    } catch (fs::FsysExceptionBase const&) {  // the copy will report it
    }
    std::lock_guard<std::mutex> const guard(lock_);
    is_counted_ = true;
}

/// One line of JSON each second.
void copy_watch::print_lines() {
    std::unique_lock<std::mutex> guard(lock_);
    while (!ended_.wait_for(guard, std::chrono::seconds(1), [this] { return has_ended_; }))
        print_json(given_, "progress",
                   {{"entries", entries_},
                    {"all_entries", is_counted_ ? json(all_entries_) : json()},
                    {"bytes", bytes_},
                    {"all_bytes", is_counted_ ? json(all_bytes_) : json()},
                    {"path", path_}});
}

/// What the terminal shows after the time.
std::string copy_watch::line() const {
    using clock = std::chrono::steady_clock;
    std::lock_guard<std::mutex> const guard(lock_);
    if (!is_counted_) return ", " + std::to_string(all_entries_) + " entries counted";
    static auto const start = clock::now() - std::chrono::seconds(1);  // of the first line
    double const seconds = std::chrono::duration<double>(clock::now() - start).count();
    int const done = per_cent(bytes_, all_bytes_);
    int const shown = all_bytes_ == 0 ? per_cent(entries_, all_entries_) : done;
    constexpr std::size_t width = 10;
    std::string bar(static_cast<std::size_t>(shown) * width / 100, '#');
    bar.resize(width, '.');
    return " [" + bar + "] " + std::to_string(per_cent(entries_, all_entries_)) + " % of " +
           std::to_string(all_entries_) + ", " + std::to_string(done) + " % of " +
           size_text(static_cast<double>(all_bytes_)) + ", " +
           size_text(static_cast<double>(bytes_) / seconds) + "/s " + path_;
}

void copy_watch::end_if_interrupted() {
    if (terminal_ == nullptr || !elapsed_time::interrupted()) return;
    terminal_.reset();
    std::cerr << "kofs copy: interrupted; entries copied: " << entries_ << " ("
              << size_text(static_cast<double>(bytes_)) << ")\n";
    std::signal(SIGINT, SIG_DFL);
    std::raise(SIGINT);
}

}  // namespace kofs

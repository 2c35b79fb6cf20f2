#include "copy_watch.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <utility>

#include <nlohmann/json.hpp>

#include "columns.hpp"
#include "report.hpp"

namespace kofs {

namespace fs = ko::filesystem;

namespace {

using clock = std::chrono::steady_clock;

std::string size_text(double bytes) {
    char const* const units[] = {"B", "kB", "MB", "GB", "TB", "PB", "EB"};
    std::size_t unit = 0;
    for (; bytes >= 1000 && unit + 1 != std::size(units); ++unit) bytes /= 1000;
    char text[32];
    std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, units[unit]);
    return text;
}

std::string size_text(std::uint64_t bytes) { return size_text(static_cast<double>(bytes)); }

/// Between 0 and 1. `done` may exceed `all`, since the targets of followed links were not counted.
double share(std::uint64_t done, std::uint64_t all) {
    return all == 0 ? 1 : static_cast<double>(std::min(done, all)) / static_cast<double>(all);
}

std::string per_cent(double part) { return std::to_string(static_cast<int>(100 * part)) + " %"; }

/// A part of the line. Those that matter less give way if the window is narrow.
struct piece {
    int rank;
    std::string text;
};

std::string joined(std::vector<piece> pieces, std::size_t width) {
    for (;;) {
        std::string line;
        for (piece const& each : pieces) line += each.text;
        if (pieces.empty() || columns(line) <= width) return line;
        pieces.erase(
            std::max_element(pieces.begin(), pieces.end(),
                             [](piece const& a, piece const& b) { return a.rank < b.rank; }));
    }
}

/// What the library finds if it follows the link `from`: its text, taken from the working directory.
std::u16string followed(arguments const& given, std::u16string const& from) {
    return handed_on(given, fs::read_symlink(from));
}

/// Whether that is something else than what the link leads to.
bool leads_elsewhere(arguments const& given, std::u16string const& from) try {
    std::u16string const target = followed(given, from);
    return fs::exists(target) ? !fs::equivalent(from, target) : fs::exists(from);
} catch (fs::PathNotFound const&) {
    return true;  // where the link leads to
}

/// Whether that is a link, of which the library copies nothing.
bool leads_to_link(arguments const& given, std::u16string const& from) {
    std::u16string const target = followed(given, from);
    return !target.empty() && fs::is_symlink(target);
}

bool is_empty(std::u16string const& directory) {
    return fs::directory_iterator(directory) == fs::directory_iterator();
}

char const link_options[] = "--copy-links, --skip-links or --follow-links";

}  // namespace

copy_watch::copy_watch(arguments const& given, std::u16string const& from)
    : given_(given), is_verbose_(given.has("verbose")) {
    if (given.has("progress") && !given.json) throw usage_error("--progress is for --json");
    if (is_verbose_ && given.json) throw usage_error("--verbose is not for --json");
    if (!given.json) {
        elapsed_time::details more;
        if (!is_verbose_) more.text = [this](std::size_t width) { return line(width); };
        more.end = [this] { abandon(); };
        terminal_ = elapsed_time::shown(given.command, std::move(more));
    }
    if (given.has("progress")) printer_ = std::thread([this] { print_lines(); });
    if ((terminal_ != nullptr && !is_verbose_) || given.has("progress")) count(from);
}

copy_watch::~copy_watch() { end(); }

/// Shows nothing from then on.
void copy_watch::end() {
    terminal_.reset();
    {
        std::lock_guard<std::mutex> const guard(lock_);
        has_ended_ = true;
    }
    ended_.notify_one();
    if (printer_.joinable()) printer_.join();
}

std::uint64_t copy_watch::run(action const& copy) {
    try {
        copy([this](fs::copy_step const& next) { return step(next); });
    } catch (usage_error const&) {
        throw;
    } catch (std::exception const& error) {
        end_if_interrupted();
        end();
        bool const link_exists = current_.is_link && given_.has("copy-links") &&
                                 dynamic_cast<fs::FileExistsError const*>(&error) != nullptr;
        throw entry_failure(error, current_.from, current_.to,
                            link_exists ? "File exists, and is not replaced by a link" : nullptr);
    }
    settle();
    end();
    for (std::u16string const& link : left_out_) {
        entry_failure const failure(std::runtime_error("a link to a link is not followed"), link,
                                    {}, nullptr);
        if (&link == &left_out_.back()) throw failure;
        report_failure(given_, failure);
    }
    return copied_entries_;
}

/// Counts the entry at hand as done.
void copy_watch::settle() {
    std::lock_guard<std::mutex> const guard(lock_);
    if (current_.from.empty()) return;
    ++entries_;
    bytes_ += current_.size;
    current_.target8.clear();
    if (!current_.is_copied) return;
    ++copied_entries_;
    copied_bytes_ += current_.size;
}

bool copy_watch::step(fs::copy_step const& next) {
    settle();
    current_entry found;
    found.from = next.from;
    found.to = next.to;
    found.is_link = next.what.type == fs::file_status::symlink_file;
    if (next.what.type == fs::file_status::regular_file) found.size = next.what.size;
    {
        std::lock_guard<std::mutex> const guard(lock_);
        current_ = found;
    }
    if (terminal_ != nullptr && elapsed_time::interrupted()) return false;
    check(next);
    found.is_copied = will_copy(next);
    if (found.is_link && given_.has("follow-links") && !found.is_copied && !is_kept(next))
        left_out_.push_back(next.from);
    bool const is_shown = terminal_ != nullptr || printer_.joinable();
    if (is_shown && found.is_copied && !given_.has("create-links") &&
        (found.size != 0 || (found.is_link && !given_.has("copy-links")))) {
        found.target8 = fs::detail::to_filesystem(next.to);
        struct stat before;
        found.is_made = ::lstat(found.target8.c_str(), &before) != 0;
        found.before = found.is_made ? 0 : static_cast<std::uint64_t>(before.st_size);
    }
    if (is_verbose_ && found.is_copied)
        std::cout << printed(next.from) << " -> " << printed(next.to) << std::endl;
    std::lock_guard<std::mutex> const guard(lock_);
    current_ = std::move(found);
    return true;
}

/// Throws if the copy would be of something else or of nothing, and no option asks for that.
void copy_watch::check(fs::copy_step const& next) const {
    if (given_.has("create-links")) return;
    bool const is_link = next.what.type == fs::file_status::symlink_file;
    if (is_link) {
        if (given_.has("copy-links") || given_.has("skip-links") || given_.has("follow-links"))
            return;
        if (given_.has("recursive"))
            throw std::runtime_error(std::string("a link: use ") + link_options);
        if (leads_to_link(given_, next.from))
            throw std::runtime_error("a link to a link is not followed: use --copy-links");
        if (leads_elsewhere(given_, next.from))
            throw std::runtime_error(
                std::string("a link that leads elsewhere from the working directory: use ") +
                link_options);
    }
    if (!given_.has("recursive") &&
        (is_link || next.what.type == fs::file_status::directory_file) &&
        fs::is_directory(next.from) && !is_empty(next.from))
        throw std::runtime_error("a directory that is not empty: use --recursive");
}

/// Whether --skip or --update leaves the target of a file as it is.
bool copy_watch::is_kept(fs::copy_step const& next) const {
    if (given_.has("skip")) return fs::exists(next.to);
    if (!given_.has("update")) return false;
    fs::file_status const target = fs::status(next.to);
    return target.type == fs::file_status::regular_file &&
           target.last_write_time >= fs::status(next.from).last_write_time;
}

bool copy_watch::will_copy(fs::copy_step const& next) const {
    if (next.what.type == fs::file_status::symlink_file) {
        if (given_.has("copy-links")) return true;
        return !given_.has("skip-links") && !leads_to_link(given_, next.from) && !is_kept(next);
    }
    if (next.what.type != fs::file_status::directory_file) return !is_kept(next);
    bool const may_exist = given_.has("skip") || given_.has("update") || given_.has("overwrite") ||
                           !given_.has("recursive");
    return !may_exist || given_.has("create-links") || !fs::exists(next.to);
}

void copy_watch::count(std::u16string const& from) {
    auto const add = [this](fs::file_status const& found) {
        std::lock_guard<std::mutex> const guard(lock_);
        ++all_entries_;
        if (found.type == fs::file_status::regular_file) all_bytes_ += found.size;
    };
    try {
        add(given_.command == "copy" ? fs::symlink_status(from) : fs::status(from));
        if (given_.has("recursive") && given_.command == "copy" && fs::is_directory(from))
            for (auto const& entry : fs::recursive_directory_iterator(
                     from, fs::directory_option::read_status,
                     [](fs::FsysExceptionBase const&) { return true; })) {
                if (terminal_ != nullptr && elapsed_time::interrupted()) break;
                add(entry.symlink_status());
            }
    } catch (fs::FsysExceptionBase const&) {  // the copy will report it
    }
    std::lock_guard<std::mutex> const guard(lock_);
    is_counted_ = true;
}

/// The bytes done, with those of the file at hand. Called with the lock.
std::uint64_t copy_watch::bytes_now() const {
    struct stat found;
    if (current_.target8.empty() || ::stat(current_.target8.c_str(), &found) != 0) return bytes_;
    auto const size = static_cast<std::uint64_t>(found.st_size);
    bool const is_untouched = !current_.is_made && size == current_.before;
    return is_untouched ? bytes_ : bytes_ + std::min(size, current_.size);
}

/// One line of JSON each second.
void copy_watch::print_lines() {
    std::unique_lock<std::mutex> guard(lock_);
    while (!ended_.wait_for(guard, std::chrono::seconds(1), [this] { return has_ended_; }))
        print_json(given_, "progress",
                   {{"entries", entries_},
                    {"all_entries", is_counted_ ? json(all_entries_) : json()},
                    {"bytes", bytes_now()},
                    {"all_bytes", is_counted_ ? json(all_bytes_) : json()},
                    {"path", fs::detail::to_filesystem(current_.from)}});
}

/// What the terminal shows after the time.
std::string copy_watch::line(std::size_t width) const {
    std::lock_guard<std::mutex> const guard(lock_);
    if (!is_counted_)
        return joined({{0, ", " + std::to_string(all_entries_) + " entries counted"}}, width);
    static auto const start = clock::now() - std::chrono::seconds(1);  // of the first line
    double const seconds = std::chrono::duration<double>(clock::now() - start).count();
    std::uint64_t const bytes = bytes_now();
    double const of_entries = share(entries_, all_entries_);
    double const done = all_bytes_ == 0 ? of_entries : share(bytes, all_bytes_);
    std::string bar(static_cast<std::size_t>(10 * done), '#');
    bar.resize(10, '.');
    double const speed = static_cast<double>(copied_bytes_ + bytes - bytes_) / seconds;
    std::vector<piece> pieces = {{3, " [" + bar + "]"}};
    if (all_bytes_ != 0)
        pieces.push_back({0, ' ' + per_cent(done) + " of " + size_text(all_bytes_)});
    if (all_entries_ != 1)
        pieces.push_back({all_bytes_ == 0 ? 0 : 4, (all_bytes_ == 0 ? " " : ", ") +
                                                       per_cent(of_entries) + " of " +
                                                       std::to_string(all_entries_) + " entries"});
    if (all_bytes_ != 0) pieces.push_back({2, ", " + size_text(speed) + "/s"});
    if (done > 0 && done < 1 && seconds >= 2)
        pieces.push_back(
            {1, ", " + clock_text(std::lround(seconds * (1 - done) / done)) + " left"});
    std::string text = joined(std::move(pieces), width);
    std::size_t const taken = columns(text) + 2;
    if (taken + 16 <= width) text += "  " + end_that_fits(shown(current_.from), width - taken);
    return text;
}

/// Called by the thread of the terminal before the process ends, and so keeps the lock: no further
/// entry is begun. Removes the part of a file, which would look like a newer one.
void copy_watch::abandon() {
    lock_.lock();
    bool const is_partial = !current_.target8.empty();
    if (is_partial && current_.is_made) ::unlink(current_.target8.c_str());
    say_interrupted();
    if (is_partial && !current_.is_made)
        std::cerr << "kofs " << given_.command << ": " << shown(current_.to) << " is incomplete\n";
}

void copy_watch::say_interrupted() const {
    std::cerr << "kofs " << given_.command << ": interrupted; entries copied: " << copied_entries_
              << " (" << size_text(copied_bytes_) << ")\n";
}

void copy_watch::end_if_interrupted() {
    if (terminal_ == nullptr || !elapsed_time::interrupted()) return;
    terminal_.reset();
    say_interrupted();
    std::signal(SIGINT, SIG_DFL);
    std::raise(SIGINT);
}

}  // namespace kofs

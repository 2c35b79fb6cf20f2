#include "commands.hpp"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <utility>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <nlohmann/json.hpp>

#include <ko/filesystem.hpp>

#include "copy_watch.hpp"
#include "inspect.hpp"
#include "listing.hpp"
#include "report.hpp"
#include "tour.hpp"

namespace kofs {

namespace fs = ko::filesystem;

using fs::detail::to_filesystem;

namespace {

/// The operand number `index` as passed to the operations, which make its native form if they need it.
std::u16string text(arguments const& given, std::size_t index = 0) {
    if (index >= given.operands.size()) return {};
    return handed_on(given,
                     fs::detail::path_traits<char, char16_t>::from_native(given.operands[index]));
}

json const done = json::object();

template <void (*Operation)(std::u16string const&)>
json for_one(arguments const& given) {
    Operation(text(given));
    return done;
}

template <void (*Operation)(std::u16string const&, std::u16string const&)>
json for_two(arguments const& given) {
    Operation(text(given, 0), text(given, 1));
    return done;
}

template <std::u16string (*Operation)(std::u16string const&)>
json path_from(arguments const& given) {
    return to_filesystem(Operation(text(given)));
}

template <std::u16string (*Operation)(std::u16string const&, std::u16string const&)>
json path_from_two(arguments const& given) {
    return to_filesystem(Operation(text(given, 0), text(given, 1)));
}

template <class Result, Result (*Query)(std::u16string const&)>
json status_from(arguments const& given) {
    return json_of(Query(text(given)));
}

/// The bits of the options that are given.
template <class Bits>
Bits bits_of(arguments const& given, std::initializer_list<std::pair<char const*, Bits>> options) {
    Bits bits{};
    for (auto const& [name, bit] : options)
        if (given.has(name)) bits = bits | bit;
    return bits;
}

// Permissions

std::pair<char const*, unsigned int> const permission_names[] = {
    {"owner_read", fs::file_status::owner_read},
    {"owner_write", fs::file_status::owner_write},
    {"owner_exec", fs::file_status::owner_exec},
    {"owner_all", fs::file_status::owner_all},
    {"group_read", fs::file_status::group_read},
    {"group_write", fs::file_status::group_write},
    {"group_exec", fs::file_status::group_exec},
    {"group_all", fs::file_status::group_all},
    {"others_read", fs::file_status::others_read},
    {"others_write", fs::file_status::others_write},
    {"others_exec", fs::file_status::others_exec},
    {"others_all", fs::file_status::others_all},
    {"set_uid_on_exec", fs::file_status::set_uid_on_exec},
    {"set_gid_on_exec", fs::file_status::set_gid_on_exec},
    {"sticky_bit", fs::file_status::sticky_bit},
    {"perms_all", fs::file_status::perms_all},
};

/// The bits of "owner_read,group_read" or "0640".
unsigned int permission_bits(std::string const& value) {
    if (!value.empty() && value.find_first_not_of("01234567") == value.npos) {
        unsigned long const bits = std::strtoul(value.c_str(), nullptr, 8);
        if (bits > 07777) throw usage_error("permissions end at 07777: " + value);
        return static_cast<unsigned int>(bits);
    }
    unsigned int bits = 0;
    for (std::size_t begin = 0, end = 0; end != value.npos; begin = end + 1) {
        end = value.find(',', begin);
        std::string const name = value.substr(begin, end == value.npos ? end : end - begin);
        unsigned int found = 0;
        for (auto const& [known, bit] : permission_names)
            if (name == known) found = bit;
        if (found == 0) throw usage_error("no such permission: " + name);
        bits |= found;
    }
    return bits;
}

json permissions(arguments const& given) {
    unsigned int perms =
        bits_of<unsigned int>(given, {{"no-follow", fs::file_status::perms_symlink},
                                      {"add", fs::file_status::perms_add},
                                      {"remove", fs::file_status::perms_remove}});
    bool has_way = false;
    for (char const* const way : {"set", "add", "remove"}) {
        if (!given.has(way)) continue;
        has_way = true;
        for (std::string const& value : given.options.at(way)) perms |= permission_bits(value);
    }
    if (!has_way) throw usage_error("one of --set, --add and --remove is needed");
    fs::permissions(text(given), perms);
    return done;
}

json access(arguments const& given) {
    unsigned int const mode = bits_of<unsigned int>(given, {{"exists", fs::access_exists},
                                                            {"read", fs::access_read},
                                                            {"write", fs::access_write},
                                                            {"execute", fs::access_execute}});
    return fs::access(text(given), mode == 0 ? fs::access_exists : mode);
}

// The rest

json exists(arguments const& given) { return fs::exists(text(given)); }

json status(arguments const& given) { return status_of(text(given)); }

json explain(arguments const& given) {
    std::string const& operand = given.operands[0];
    return explanation(operand, handed_on(given, fs::detail::from_filesystem(operand)));
}

json create_symlink(arguments const& given) {
    unsigned int type = fs::file_status::file_type_auto;
    if (given.has("directory")) type = fs::file_status::directory_file;
    if (given.has("file")) type = fs::file_status::regular_file;
    fs::create_symlink(text(given, 0), text(given, 1), type);
    return done;
}

json rename(arguments const& given) {
    fs::rename_options options;
    options.preserve_last_write_time = given.has("keep-times") ? 1 : 0;
    fs::rename(text(given, 0), text(given, 1), options);
    return done;
}

json remove(arguments const& given) {
    if (given.has("directory"))
        fs::remove(text(given), fs::file_status::directory_file);
    else if (given.has("file"))
        fs::remove(text(given), fs::file_status::regular_file);
    else
        fs::remove(text(given));
    return done;
}

fs::copy_option copy_bits(arguments const& given) {
    return bits_of<fs::copy_option>(given, {{"overwrite", fs::copy_option::overwrite_if_exists},
                                            {"skip", fs::copy_option::skip_existing},
                                            {"update", fs::copy_option::update_existing},
                                            {"recursive", fs::copy_option::recursive},
                                            {"copy-links", fs::copy_option::copy_symlinks},
                                            {"skip-links", fs::copy_option::skip_symlinks},
                                            {"create-links", fs::copy_option::create_symlinks}});
}

json copy(arguments const& given) {
    std::u16string const from = text(given, 0);
    copy_watch watch(given, from);
    return {{"copied", watch.run([&](fs::copy_observer const& observer) {
                 fs::copy(from, text(given, 1), copy_bits(given), observer);
             })}};
}

/// Nothing if it can't be queried: the operation reports why.
fs::file_status status_or_none(std::u16string const& path) try {
    return fs::status(path);
} catch (fs::FsysExceptionBase const&) {
    return {};
}

json copy_file(arguments const& given) {
    std::u16string const from = text(given, 0);
    std::u16string const to = text(given, 1);
    copy_watch watch(given, from);
    return {{"copied", watch.run([&](fs::copy_observer const& observer) {
                 if (fs::file_status const found = status_or_none(from);
                     found.type != fs::file_status::file_not_found)
                     observer({from, to, found, 0, 0});
                 fs::copy_file(from, to, copy_bits(given));
             })}};
}

json list_entries(arguments const& given) { return list(given, text(given)); }

json remove_all(arguments const& given) {
    if (given.operands[0].empty()) throw std::runtime_error("the path is empty");
    return for_one<fs::remove_all>(given);
}

json resize(arguments const& given) {
    std::string const& size = given.operands[1];
    char* end = nullptr;
    errno = 0;
    unsigned long long const bytes = std::strtoull(size.c_str(), &end, 10);
    if (size.find_first_not_of("0123456789") != size.npos || size.empty() || errno != 0)
        throw usage_error("no size in bytes: " + size);
    fs::resize_file(text(given), bytes);
    return done;
}

json touch(arguments const& given) {
    boost::posix_time::ptime time = boost::posix_time::microsec_clock::universal_time();
    if (given.has("time")) {
        std::string const& value = given.options.at("time").back();
        try {
            time = boost::posix_time::from_iso_extended_string(
                value.substr(0, value.size() - (!value.empty() && value.back() == 'Z')));
        } catch (std::exception const&) {
            throw usage_error("no time as 2024-01-31T12:00:00Z: " + value);
        }
    }
    fs::last_write_time(text(given), time);
    return done;
}

json relative(arguments const& given) {
    bool const from_here = given.operands.size() == 1;
    std::u16string const base = from_here ? fs::get_current_path() : text(given, 1);
    std::u16string const found = fs::relative(text(given), base);
    if (found.empty() && !fs::weakly_canonical(text(given)).empty() &&
        !fs::weakly_canonical(base).empty())
        throw std::runtime_error("no relative path leads there");
    return to_filesystem(found);
}

json current_path(arguments const&) { return to_filesystem(fs::get_current_path()); }

json change_current_path(arguments const& given) {
    return fs::change_current_path(text(given)) ? current_path(given) : json(false);
}

json equivalent(arguments const& given) { return fs::equivalent(text(given, 0), text(given, 1)); }

json space(arguments const& given) {
    auto const info = fs::space(fs::upath(text(given)));
    return {{"capacity", info.capacity}, {"free", info.free}, {"available", info.available}};
}

json get_unc_path(arguments const& given) {
    return to_filesystem(fs::get_unc_path(text(given), /*flag=*/false));
}

json walk_through(arguments const&) { return tour(); }

option const expand = {"expand", nullptr, "Expand a leading ~ or ~name"};
option const print0 = {"print0", nullptr, "End the path with a zero byte, and escape nothing"};

std::vector<option> const copy_file_options = {
    {"overwrite", nullptr, "Replace existing files", 1},
    {"skip", nullptr, "Keep existing files", 1},
    {"update", nullptr, "Replace existing files that are older", 1},
    {"recursive", nullptr, "Copy a directory and its contents"},
    {"copy-links", nullptr, "Copy links as links", 2},
    {"skip-links", nullptr, "Ignore links", 2},
    {"create-links", nullptr, "Make a link to the source instead of copying"},
};

std::vector<option> copy_options() {
    std::vector<option> options = copy_file_options;
    options.insert(options.end() - 1, {"follow-links", nullptr,
                                       "Copy what links lead to, from the working directory", 2});
    options.push_back(
        {"verbose", nullptr, "Print each entry and its target before it is copied", 3});
    options.push_back({"progress", nullptr, "With --json: print a line each second", 3});
    return options;
}

command asks(char const* name, char const* operands, char const* help,
             json (*run)(arguments const&), std::vector<option> options = {}) {
    return {name, operands, help, run, nature::answers, std::move(options)};
}

command acts(char const* name, char const* operands, char const* help,
             json (*run)(arguments const&), std::vector<option> options = {}) {
    return {name, operands, help, run, nature::acts, std::move(options)};
}

command takes_time(char const* name, char const* operands, char const* help,
                   json (*run)(arguments const&), std::vector<option> options = {}) {
    return {name, operands, help, run, nature::takes_time, std::move(options)};
}

}  // namespace

std::vector<command> commands() {
    return {
        {"tour",
         "",
         "Show every operation in a scratch directory",
         walk_through,
         nature::narrates,
         {}},
        asks("explain", "PATH...", "Show how each path is converted, and what its elements are",
             explain, {expand}),
        asks("status", "PATH...", "Show each path's native form, parts and status", status,
             {expand}),
        asks("exists", "PATH", "Whether a path exists; links are followed", exists, {expand}),
        asks("symlink-status", "PATH", "Show the status of a path; links are not followed",
             status_from<fs::file_status, fs::symlink_status>, {expand}),
        asks("status-express-light", "PATH", "Show type, time and size; the path as given",
             status_from<fs::file_status_light, fs::status_express_light>),
        asks("access", "PATH", "Whether this process has the given kinds of access", access,
             {{"exists", nullptr, "Exists (the default); a missing path is then not a failure"},
              {"read", nullptr, "Read"},
              {"write", nullptr, "Write"},
              {"execute", nullptr, "Execute, or search a directory"},
              expand}),
        {"list",
         "PATH...",
         "Print the paths of the entries of each directory",
         list_entries,
         nature::lists,
         {{"recursive", nullptr, "Also of the directories below"},
          {"depth", "N", "Also of the directories below, down to N levels"},
          {"follow-links", nullptr, "Enter directories through links"},
          {"skip-denied", nullptr, "Skip directories that may not be read"},
          {"long", nullptr, "Print type, permissions, size, time and link", 1},
          {"sort", "name|size|time", "Sort all: by name, largest or newest first"},
          {"print0", nullptr, print0.help, 1}}},
        asks("equivalent", "PATH OTHER", "Whether both paths are the same file", equivalent),
        asks("space", "PATH", "Show the size and free space of the file system, in bytes", space,
             {expand}),
        asks("current-path", "", "Print the working directory", current_path, {print0}),
        asks("change-current-path", "PATH",
             "Change the working directory (of kofs alone), and print it", change_current_path,
             {print0}),
        asks("read-symlink", "PATH", "Print the text of a link", path_from<fs::read_symlink>,
             {expand, print0}),
        asks("absolute", "PATH [BASE]", "Print the absolute path, without access to files",
             path_from_two<fs::absolute>, {expand, print0}),
        asks("canonical", "PATH [BASE]", "Print the absolute path without links and dots",
             path_from_two<fs::canonical>, {expand, print0}),
        asks("weakly-canonical", "PATH", "The same; trailing elements may be missing",
             path_from<fs::weakly_canonical>, {expand, print0}),
        asks("relative", "PATH [BASE]", "Print the path relative to BASE or the working directory",
             relative, {expand, print0}),
        asks("get-unc-path", "PATH", "Print the path; for callers from other platforms",
             get_unc_path, {print0}),
        acts("create-directory", "PATH...", "Make directories", for_one<fs::create_directory>),
        acts("create-directories", "PATH...", "Make directories and missing parents",
             for_one<fs::create_directories>),
        acts("create-symlink", "TARGET LINK", "Make a symbolic link with the text TARGET",
             create_symlink,
             {{"file", nullptr, "For a file; no difference on POSIX", 1},
              {"directory", nullptr, "For a directory; no difference on POSIX", 1}}),
        acts("hard-link", "EXISTING LINK", "Make another name for a file",
             for_two<fs::create_hard_link>),
        acts("resize", "PATH SIZE", "Truncate a file, or extend it with zeros, to SIZE bytes",
             resize),
        acts("touch", "PATH...", "Set the write time, by default to now", touch,
             {{"time", "TIME", "In UTC, like 2024-01-31T12:00:00.5Z"}}),
        acts("permissions", "PATH...",
             "Change permissions, given as names like owner_read,group_all or in octal",
             permissions,
             {{"set", "PERMS", "Exactly these", 1},
              {"add", "PERMS", "These as well", 1},
              {"remove", "PERMS", "All but these", 1},
              {"no-follow", nullptr, "Of a link itself, if the system supports it"}}),
        acts("create-shortcut", "FROM TO", "Fail; only other platforms have shortcuts",
             for_two<fs::create_shortcut>),
        acts("copy", "FROM TO", "Copy anything", copy, copy_options()),
        acts("copy-file", "FROM TO", "Copy a file, links followed", copy_file, copy_file_options),
        takes_time("copy-directory", "FROM TO", "Make a directory with another's permissions",
                   for_two<fs::copy_directory>),
        takes_time("copy-symlink", "FROM TO", "Copy a link as a link", for_two<fs::copy_symlink>),
        takes_time("rename", "FROM TO", "Move, to another file system as well", rename,
                   {{"keep-times", nullptr, "Keep the write times of files that are copied"}}),
        takes_time("remove", "PATH...", "Remove files, links and empty directories", remove,
                   {{"file", nullptr, "As remove-file, without looking first", 1},
                    {"directory", nullptr, "As remove-directory, without looking first", 1}}),
        takes_time("remove-file", "PATH...", "Remove files or links", for_one<fs::remove_file>),
        takes_time("remove-directory", "PATH...", "Remove empty directories",
                   for_one<fs::remove_directory>),
        takes_time("remove-symlink", "PATH...", "Remove links or files",
                   for_one<fs::remove_symlink>),
        takes_time("remove-all", "PATH...", "Remove whole trees", remove_all),
    };
}

std::vector<std::vector<option>> alternatives(std::vector<option> const& options) {
    std::vector<std::vector<option>> sets;
    for (option const& each : options) {
        auto const same = std::find_if(sets.begin(), sets.end(), [&](auto const& set) {
            return each.group != 0 && set[0].group == each.group;
        });
        same == sets.end() ? sets.push_back({each}) : same->push_back(each);
    }
    return sets;
}

std::vector<std::string> permission_words() {
    std::vector<std::string> words;
    for (auto const& [name, bits] : permission_names) words.push_back(name);
    return words;
}

}  // namespace kofs

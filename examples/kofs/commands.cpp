#include "commands.hpp"

#include <cstdlib>
#include <iostream>
#include <string>
#include <utility>

#include <ko/filesystem.hpp>

#include "report.hpp"
#include "result.hpp"
#include "tour.hpp"

namespace kofs {

namespace fs = ko::filesystem;

namespace {

/// The operand in UTF-16, otherwise as given: the operations make the native form, or do without.
std::u16string text(std::string const& operand) {
    return fs::detail::path_traits<char, char16_t>::from_native(operand);
}

/// The operand number `index`, or an empty text.
std::u16string text(arguments const& given, std::size_t index) {
    return index < given.operands.size() ? text(given.operands[index]) : std::u16string();
}

/// A command that does `Operation` to its operand.
template <void (*Operation)(std::u16string const&)>
int for_each(arguments const& given) {
    Operation(text(given, 0));
    return EXIT_SUCCESS;
}

/// A command that prints what `operation` makes of the one operand.
template <std::u16string (*Operation)(std::u16string const&)>
int print_result(arguments const& given) {
    return print(given, Operation(text(given, 0)));
}

/// The same with a second operand that may be left out.
template <std::u16string (*Operation)(std::u16string const&, std::u16string const&)>
int print_result_against(arguments const& given) {
    return print(given, Operation(text(given, 0), text(given, 1)));
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
    if (!value.empty() && value.find_first_not_of("01234567") == value.npos && value.size() < 6)
        return static_cast<unsigned int>(std::strtoul(value.c_str(), nullptr, 8));
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

int permissions(arguments const& given) {
    unsigned int perms = given.has("no-follow") ? fs::file_status::perms_symlink : 0;
    int ways = 0;
    for (auto const& [option, modifier] : {std::pair<char const*, unsigned int>("set", 0),
                                           {"add", fs::file_status::perms_add},
                                           {"remove", fs::file_status::perms_remove}}) {
        if (!given.has(option)) continue;
        ++ways;
        perms |= modifier;
        for (std::string const& value : given.options.at(option)) perms |= permission_bits(value);
    }
    if (ways != 1) throw usage_error("one of --set, --add and --remove is needed");
    fs::permissions(text(given, 0), perms);
    return EXIT_SUCCESS;
}

int access(arguments const& given) {
    unsigned int mode = 0;
    for (auto const& [option, bit] : {std::pair("exists", fs::access_exists),
                                      {"read", fs::access_read},
                                      {"write", fs::access_write},
                                      {"execute", fs::access_execute}})
        if (given.has(option)) mode |= bit;
    return answer(given, fs::access(text(given, 0), mode == 0 ? fs::access_exists : mode));
}

// Status

int exists(arguments const& given) { return answer(given, fs::exists(text(given, 0))); }

int status(arguments const& given) {
    bool found = false;
    if (given.json)
        print_json(given, "result", description_json(given.operands[0], found));
    else
        found = describe(given.operands[0], std::cout, std::cerr);
    return found ? EXIT_SUCCESS : EXIT_FAILURE;
}

template <fs::file_status (*Query)(std::u16string const&)>
int print_status_of(arguments const& given) {
    auto const found = Query(text(given, 0));
    if (given.json)
        print_json(given, "result", status_json(found));
    else
        print_status(found, std::cout);
    return found.type == fs::file_status::file_not_found ? EXIT_FAILURE : EXIT_SUCCESS;
}

int status_express_light(arguments const& given) {
    auto const found = fs::status_express_light(text(given, 0));
    fs::file_status shown_part;
    shown_part.type = found.type;
    shown_part.last_write_time = found.last_write_time;
    shown_part.size = found.size;
    if (given.json)
        print_json(given, "result", status_json(found));
    else
        print_status(shown_part, std::cout);
    return found.type == fs::file_status::file_not_found ? EXIT_FAILURE : EXIT_SUCCESS;
}

// Creating, moving, removing, copying

int create_symlink(arguments const& given) {
    unsigned int type = fs::file_status::file_type_auto;
    if (given.has("directory")) type = fs::file_status::directory_file;
    if (given.has("file")) type = fs::file_status::regular_file;
    fs::create_symlink(text(given, 0), text(given, 1), type);
    return EXIT_SUCCESS;
}

int rename(arguments const& given) {
    fs::rename_options options;
    options.preserve_last_write_time = given.has("keep-times") ? 1 : 0;
    fs::rename(text(given, 0), text(given, 1), options);
    return EXIT_SUCCESS;
}

int remove(arguments const& given) {
    if (given.has("directory"))
        fs::remove(text(given, 0), fs::file_status::directory_file);
    else if (given.has("file"))
        fs::remove(text(given, 0), fs::file_status::regular_file);
    else
        fs::remove(text(given, 0));
    return EXIT_SUCCESS;
}

std::vector<option_description> const copy_options = {
    {"overwrite", nullptr, "Replace existing files"},
    {"skip", nullptr, "Leave existing files alone"},
    {"update", nullptr, "Replace existing files that are older"},
    {"recursive", nullptr, "Copy a directory with all it holds"},
    {"copy-links", nullptr, "Copy links as links"},
    {"skip-links", nullptr, "Ignore links"},
    {"create-links", nullptr, "Make a link to the source instead of copying"},
};

fs::copy_option copy_options_of(arguments const& given) {
    fs::copy_option options = fs::copy_option::none;
    for (auto const& [name, option] : {std::pair("overwrite", fs::copy_option::overwrite_if_exists),
                                       {"skip", fs::copy_option::skip_existing},
                                       {"update", fs::copy_option::update_existing},
                                       {"recursive", fs::copy_option::recursive},
                                       {"copy-links", fs::copy_option::copy_symlinks},
                                       {"skip-links", fs::copy_option::skip_symlinks},
                                       {"create-links", fs::copy_option::create_symlinks}})
        if (given.has(name)) options |= option;
    return options;
}

template <void (*Operation)(std::u16string const&, std::u16string const&, fs::copy_option)>
int copy_with_options(arguments const& given) {
    Operation(text(given, 0), text(given, 1), copy_options_of(given));
    return EXIT_SUCCESS;
}

template <void (*Operation)(std::u16string const&, std::u16string const&)>
int for_two(arguments const& given) {
    Operation(text(given, 0), text(given, 1));
    return EXIT_SUCCESS;
}

// The rest

int relative(arguments const& given) {
    return print(given, given.operands.size() == 1 ? fs::relative(text(given, 0))
                                                   : fs::relative(text(given, 0), text(given, 1)));
}

int current_path(arguments const& given) { return print(given, fs::get_current_path()); }

int change_current_path(arguments const& given) {
    return fs::change_current_path(text(given, 0)) ? current_path(given) : answer(given, false);
}

int equivalent(arguments const& given) {
    return answer(given, fs::equivalent(text(given, 0), text(given, 1)));
}

int space(arguments const& given) {
    auto const info = fs::space(fs::upath(text(given, 0)));
    if (given.json)
        print_json(
            given, "result",
            {{"capacity", info.capacity}, {"free", info.free}, {"available", info.available}});
    else
        std::cout << "capacity  " << info.capacity << " bytes\nfree      " << info.free
                  << " bytes\navailable " << info.available << " bytes\n";
    return EXIT_SUCCESS;
}

int get_unc_path(arguments const& given) {
    return print(given, fs::get_unc_path(text(given, 0), /*flag=*/false));
}

}  // namespace

std::vector<command> commands() {
    return {
        {"tour",
         "",
         0,
         0,
         "Walk through every operation in a scratch directory",
         {},
         tour,
         nature::narrates},
        {"status",
         "PATH...",
         1,
         any_number,
         "Tell each path's native form and parts, and what is there",
         {},
         status},
        {"exists", "PATH", 1, 1, "Tell whether something is there, links followed", {}, exists},
        {"symlink-status",
         "PATH",
         1,
         1,
         "Tell what is there, a link not followed",
         {},
         print_status_of<fs::symlink_status>},
        {"status-express-light",
         "PATH",
         1,
         1,
         "Tell type, time and size, the path taken exactly as given",
         {},
         status_express_light},
        {"access",
         "PATH",
         1,
         1,
         "Tell whether this process may do all that the options ask for",
         {{"exists", nullptr, "Exists (the default); a missing path is an answer then"},
          {"read", nullptr, "Read"},
          {"write", nullptr, "Write"},
          {"execute", nullptr, "Execute, or search a directory"}},
         access},
        {"permissions",
         "PATH...",
         1,
         any_number,
         "Change permissions, given as names like owner_read,group_all or in octal",
         {{"set", "PERMS", "These and no others"},
          {"add", "PERMS", "These as well"},
          {"remove", "PERMS", "All but these"},
          {"no-follow", nullptr, "Of a link itself, where the system can"}},
         permissions,
         nature::acts},
        {"current-path", "", 0, 0, "Print the working directory", {}, current_path},
        {"change-current-path",
         "PATH",
         1,
         1,
         "Change the working directory (of kofs alone), and print it",
         {},
         change_current_path},
        {"create-directory",
         "PATH...",
         1,
         any_number,
         "Make directories",
         {},
         for_each<fs::create_directory>,
         nature::acts},
        {"create-directories",
         "PATH...",
         1,
         any_number,
         "Make directories and those above them",
         {},
         for_each<fs::create_directories>,
         nature::acts},
        {"create-symlink",
         "TARGET LINK",
         2,
         2,
         "Make a symbolic link with the text TARGET",
         {{"file", nullptr, "For a file; makes no difference here"},
          {"directory", nullptr, "For a directory; makes no difference here"}},
         create_symlink,
         nature::acts},
        {"rename",
         "FROM TO",
         2,
         2,
         "Move, to another file system as well",
         {{"keep-times", nullptr, "Keep the write times of files that had to be copied"}},
         rename,
         nature::takes_time},
        {"remove",
         "PATH...",
         1,
         any_number,
         "Remove files, links and empty directories",
         {{"file", nullptr, "As remove-file, without looking first"},
          {"directory", nullptr, "As remove-directory, without looking first"}},
         remove,
         nature::takes_time},
        {"remove-file",
         "PATH...",
         1,
         any_number,
         "Remove files or links",
         {},
         for_each<fs::remove_file>,
         nature::takes_time},
        {"remove-directory",
         "PATH...",
         1,
         any_number,
         "Remove empty directories",
         {},
         for_each<fs::remove_directory>,
         nature::takes_time},
        {"remove-symlink",
         "PATH...",
         1,
         any_number,
         "Remove links or files",
         {},
         for_each<fs::remove_symlink>,
         nature::takes_time},
        {"remove-all",
         "PATH...",
         1,
         any_number,
         "Remove whole trees",
         {},
         for_each<fs::remove_all>,
         nature::takes_time},
        {"read-symlink",
         "PATH",
         1,
         1,
         "Print the text of a link",
         {},
         print_result<fs::read_symlink>},
        {"absolute",
         "PATH [BASE]",
         1,
         2,
         "Print the absolute path; nothing is looked up",
         {},
         print_result_against<fs::absolute>},
        {"canonical",
         "PATH [BASE]",
         1,
         2,
         "Print the absolute path without links and dots",
         {},
         print_result_against<fs::canonical>},
        {"weakly-canonical",
         "PATH",
         1,
         1,
         "The same for a path of which an end may be missing",
         {},
         print_result<fs::weakly_canonical>},
        {"relative", "PATH [BASE]", 1, 2, "Print the way from BASE, or from here", {}, relative},
        {"copy", "FROM TO", 2, 2, "Copy anything", copy_options, copy_with_options<fs::copy>,
         nature::takes_time},
        {"copy-file", "FROM TO", 2, 2, "Copy a file", copy_options,
         copy_with_options<fs::copy_file>, nature::takes_time},
        {"copy-directory",
         "FROM TO",
         2,
         2,
         "Make a directory with another's permissions",
         {},
         for_two<fs::copy_directory>,
         nature::takes_time},
        {"copy-symlink",
         "FROM TO",
         2,
         2,
         "Copy a link as a link",
         {},
         for_two<fs::copy_symlink>,
         nature::takes_time},
        {"equivalent", "PATH PATH", 2, 2, "Tell whether both lead to one file", {}, equivalent},
        {"space", "PATH", 1, 1, "Tell how large the file system is, and what is free", {}, space},
        {"get-unc-path",
         "PATH",
         1,
         1,
         "Print the path (other platforms have more to it)",
         {},
         get_unc_path},
        {"create-shortcut",
         "FROM TO",
         2,
         2,
         "Fail: other platforms have shortcuts",
         {},
         for_two<fs::create_shortcut>,
         nature::acts},
    };
}

}  // namespace kofs

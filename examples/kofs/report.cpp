#include "report.hpp"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <iomanip>
#include <ostream>
#include <stdexcept>
#include <string>

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/posix_time.hpp>

namespace kofs {

namespace fs = ko::filesystem;

namespace {

struct row {
    char const* name;
    friend std::ostream& operator<<(std::ostream& out, row const& r) {
        return out << "  " << std::left << std::setw(13) << r.name << ' ';
    }
};

boost::posix_time::ptime epoch() {
    return boost::posix_time::ptime(boost::gregorian::date(1970, 1, 1));
}

std::string quoted(std::u16string const& text) { return '"' + shown(text) + '"'; }

char const* type_name(std::uint32_t type) {
    switch (type) {
        case fs::file_status::regular_file: return "regular file";
        case fs::file_status::directory_file: return "directory";
        case fs::file_status::symlink_file: return "symbolic link";
        case fs::file_status::block_file: return "block device";
        case fs::file_status::character_file: return "character device";
        case fs::file_status::fifo_file: return "named pipe";
        case fs::file_status::socket_file: return "socket";
        case fs::file_status::file_not_found: return "nothing";
        default: return "unknown";
    }
}

void print_text(fs::upath const& path, std::ostream& out) {
    auto const parts = fs::detail::extract_pathname_elements(path.native());
    out << row{"native form"} << quoted(path.native()) << '\n'
        << row{"parts"} << "root " << quoted(path.root_path().native()) << ", parent "
        << quoted(parts.parent_path) << ", filename " << quoted(parts.filename) << ", stem "
        << quoted(parts.stem) << ", extension " << quoted(parts.extension) << '\n';
}

/// A time as text; Date_Time can only write the years 1400 to 9999.
std::string shown(boost::posix_time::ptime const& time) {
    try {
        return boost::posix_time::to_simple_string(time) + " UTC";
    } catch (std::out_of_range const&) {
        return std::to_string((time - epoch()).ticks()) + " microseconds from 1970";
    }
}

/// A year of more than four digits has six, and its sign.
std::string iso_time(std::int64_t microseconds) {
    std::int64_t const part = (microseconds % 1'000'000 + 1'000'000) % 1'000'000;
    auto const seconds = static_cast<std::time_t>((microseconds - part) / 1'000'000);
    std::tm utc{};
    ::gmtime_r(&seconds, &utc);
    int const year = utc.tm_year + 1900;
    char text[64];
    std::snprintf(text, sizeof text,
                  year < 0 || year > 9999 ? "%+07d-%02d-%02dT%02d:%02d:%02d.%06dZ"
                                          : "%04d-%02d-%02dT%02d:%02d:%02d.%06dZ",
                  year, utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec,
                  static_cast<int>(part));
    return text;
}

/// Null for no time, and for one that the library had to call infinite.
json json_of(boost::posix_time::ptime const& time) {
    if (time.is_special()) return nullptr;
    try {
        return iso_time((time - epoch()).ticks());
    } catch (std::out_of_range const&) {
        return nullptr;
    }
}

json octal(std::uint32_t permissions) {
    char text[12];
    std::snprintf(text, sizeof text, "%04o", static_cast<unsigned>(permissions));
    return text;
}

void print_details(fs::file_status const& s, std::ostream& out) {
    out << row{"permissions"} << rwx(s.permissions) << " (" << std::oct << s.permissions << std::dec
        << ")\n"
        << row{"size"} << s.size << " bytes\n"
        << row{"written"} << shown(s.last_write_time) << '\n'
        << row{"accessed"} << shown(s.last_access_time) << '\n'
        << row{"changed"} << shown(s.last_status_change_time) << '\n';
}

std::string class_name(fs::FsysExceptionBase const& error) {
    std::string const& identifier = error.message_id();
    return identifier.substr(identifier.rfind(':') + 1);
}

}  // namespace

std::string shown(std::u16string const& text) {
    std::u16string printable;
    for (char16_t const unit : text) {
        if (unit >= 0x20 && (unit < 0x7F || unit > 0x9F)) {
            printable += unit;
            continue;
        }
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\u%04X", static_cast<unsigned>(unit));
        printable.append(escape, escape + 6);
    }
    std::string const text8 = fs::detail::to_filesystem(printable);
    return text8.empty() ? fs::InvalidArgument("", {}, {}).printHelper(text) : text8;
}

void print_status(fs::file_status const& found, std::ostream& out) {
    out << row{"type"} << type_name(found.type) << '\n';
    if (found.type != fs::file_status::file_not_found) print_details(found, out);
}

json status_json(fs::file_status const& found) {
    if (found.type == fs::file_status::file_not_found) return nullptr;
    return {{"type", type_name(found.type)},
            {"permissions", rwx(found.permissions)},
            {"mode", octal(found.permissions)},
            {"size", found.size},
            {"written", json_of(found.last_write_time)},
            {"accessed", json_of(found.last_access_time)},
            {"changed", json_of(found.last_status_change_time)}};
}

json status_json(fs::file_status_light const& found) {
    if (found.type == fs::file_status::file_not_found) return nullptr;
    return {{"type", type_name(found.type)},
            {"size", found.size},
            {"written", json_of(found.last_write_time)}};
}

std::string rwx(std::uint32_t permissions) {
    std::string text = "rwxrwxrwx";
    for (std::size_t i = 0; i != text.size(); ++i)
        if ((permissions & (fs::file_status::owner_read >> i)) == 0) text[i] = '-';
    auto const mark = [&](std::uint32_t bit, std::size_t at, char executable, char plain) {
        if ((permissions & bit) != 0) text[at] = text[at] == '-' ? plain : executable;
    };
    mark(fs::file_status::set_uid_on_exec, 2, 's', 'S');
    mark(fs::file_status::set_gid_on_exec, 5, 's', 'S');
    mark(fs::file_status::sticky_bit, 8, 't', 'T');
    return text;
}

void print_error(std::ostream& out, fs::FsysExceptionBase const& error) {
    out << row{"error"} << class_name(error) << '\n'
        << row{"  message"} << error.what() << '\n'
        << row{"  path"} << quoted(error.path()) << '\n'
        << row{"  arguments"};
    for (std::u16string const& argument : error.arguments()) out << quoted(argument) << ' ';
    if (error.arguments().empty()) out << "none";
    out << '\n' << row{"  number"} << error.system_error_number();
    if (error.system_error_number() != 0)
        out << " (" << std::strerror(error.system_error_number()) << ')';
    out << '\n';
}

json error_json(fs::FsysExceptionBase const& error) {
    return {{"class", class_name(error)},     {"id", error.message_id()},
            {"what", error.what()},           {"path", error.path()},
            {"arguments", error.arguments()}, {"number", error.system_error_number()}};
}

bool describe(std::string const& text, std::ostream& out, std::ostream& errors) {
    out << shown(fs::detail::from_filesystem(text)) << '\n';
    try {
        auto const path = fs::upath::from_utf8(text);
        print_text(path, out);
        bool const exists = fs::exists(path);
        out << row{"exists"} << (exists ? "yes" : "no") << '\n';
        auto const there = fs::symlink_status(path);
        auto const reached = fs::status(path);
        out << row{"type"} << type_name(there.type);
        if (there.type == fs::file_status::symlink_file)
            out << " to " << type_name(reached.type) << (exists ? "" : " (dangling)");
        out << '\n';
        if (there.type == fs::file_status::file_not_found) return false;
        print_details(reached.type == fs::file_status::file_not_found ? there : reached, out);
        return true;
    } catch (fs::FsysExceptionBase const& error) {
        out << std::flush;
        print_error(errors, error);
        return false;
    }
}

json description_json(std::string const& text, bool& found) {
    auto const path = fs::upath::from_utf8(text);
    auto const parts = fs::detail::extract_pathname_elements(path.native());
    bool const exists = fs::exists(path);
    auto const there = fs::symlink_status(path);
    found = there.type != fs::file_status::file_not_found;
    return {{"native_form", path.native()},
            {"root", path.root_path().native()},
            {"parent", parts.parent_path},
            {"filename", parts.filename},
            {"stem", parts.stem},
            {"extension", parts.extension},
            {"exists", exists},
            {"symlink_status", status_json(there)},
            {"status", status_json(fs::status(path))}};
}

}  // namespace kofs

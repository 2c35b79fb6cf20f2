#include "report.hpp"

#include <cstdio>
#include <cstring>
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
        boost::posix_time::ptime const epoch(boost::gregorian::date(1970, 1, 1));
        return std::to_string((time - epoch).ticks()) + " microseconds from 1970";
    }
}

void print_details(fs::file_status const& s, std::ostream& out) {
    out << row{"permissions"} << rwx(s.permissions) << " (" << std::oct << s.permissions << std::dec
        << ")\n"
        << row{"size"} << s.size << " bytes\n"
        << row{"written"} << shown(s.last_write_time) << '\n'
        << row{"accessed"} << shown(s.last_access_time) << '\n'
        << row{"changed"} << shown(s.last_status_change_time) << '\n';
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
    std::string const& identifier = error.message_id();
    out << row{"error"} << identifier.substr(identifier.rfind(':') + 1) << '\n'
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

}  // namespace kofs

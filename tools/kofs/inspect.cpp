#include "inspect.hpp"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <ostream>
#include <stdexcept>
#include <type_traits>

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/posix_time.hpp>
#include <ko/filesystem/exceptions/escape.hpp>
#include <nlohmann/json.hpp>

#include "report.hpp"

namespace kofs {

namespace fs = ko::filesystem;

using fs::detail::from_filesystem;
using fs::detail::to_filesystem;

namespace {

/// A year outside 0000 to 9999 has a sign and six digits.
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

/// Null for no time, and for one that the library saturated to infinity.
json json_of(boost::posix_time::ptime const& time) {
    static boost::posix_time::ptime const epoch(boost::gregorian::date(1970, 1, 1));
    if (time.is_special()) return nullptr;
    try {
        return iso_time((time - epoch).ticks());
    } catch (std::out_of_range const&) {
        return nullptr;
    }
}

/// Printable ASCII unchanged, backslashes doubled, other bytes as \xHH and UTF-16 units as \uHHHH.
template <class CharT>
std::string escaped(std::basic_string<CharT> const& text) {
    std::string result;
    for (CharT const each : text) {
        unsigned const unit = static_cast<std::make_unsigned_t<CharT>>(each);
        if (unit == '\\') result += '\\';
        if (unit >= 0x20 && unit <= 0x7E) {
            result += static_cast<char>(unit);
        } else if constexpr (sizeof(CharT) == 2) {
            fs::detail::append_escape(result, each);
        } else {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\x%02X", unit);
            result += escape;
        }
    }
    return result;
}

/// The positions of the bytes that are not UTF-8, for which `units` has U+FFFD.
json substituted_bytes(std::string const& bytes, std::u16string const& units) {
    json found = json::array();
    std::size_t at = 0;
    for (char16_t const unit : units) {
        if (unit == 0xFFFD && bytes.compare(at, 3, "\xEF\xBF\xBD") != 0)
            found.push_back(at++);
        else  // half of a surrogate pair is half of four bytes
            at += unit < 0x80 ? 1 : unit < 0x800 || (unit & 0xF800) == 0xD800 ? 2 : 3;
    }
    return found;
}

/// Describes one element. Sets `error` to the error number if it, or the target of a link, is unreachable.
json element(std::string const& path8, int& error) {
    json found = {{"name", fs::detail::path_traits<char, char>::extract_filename(path8)}};
    struct stat status;
    if (::lstat(path8.c_str(), &status) != 0) {
        error = errno;
        found["error"] = std::strerror(error);
        return found;
    }
    auto const mode = static_cast<std::uint32_t>(status.st_mode);
    ::passwd const* const user = ::getpwuid(status.st_uid);
    ::group const* const group = ::getgrgid(status.st_gid);
    found["permissions"] = rwx(mode);
    found["owner"] = user != nullptr ? user->pw_name : std::to_string(status.st_uid);
    found["group"] = group != nullptr ? group->gr_name : std::to_string(status.st_gid);
    found["type"] = type_name(mode & fs::file_status::file_type_mask);
    if (!S_ISLNK(status.st_mode)) return found;
    char text[PATH_MAX];
    ssize_t const length = ::readlink(path8.c_str(), text, sizeof text);
    std::string const target(text, length < 0 ? 0 : static_cast<std::size_t>(length));
    found["link"] = to_filesystem(from_filesystem(target));
    if (::stat(path8.c_str(), &status) == 0) return found;
    error = errno;
    found["error"] = std::strerror(error);
    return found;
}

}  // namespace

char const* type_name(std::uint32_t type) {
    switch (type) {
        case fs::file_status::regular_file: return "regular file";
        case fs::file_status::directory_file: return "directory";
        case fs::file_status::symlink_file: return "symbolic link";
        case fs::file_status::block_file: return "block device";
        case fs::file_status::character_file: return "character device";
        case fs::file_status::fifo_file: return "named pipe";
        case fs::file_status::socket_file: return "socket";
        default: return "unknown";
    }
}

char type_letter(std::uint32_t type) {
    switch (type) {
        case fs::file_status::regular_file: return '-';
        case fs::file_status::directory_file: return 'd';
        case fs::file_status::symlink_file: return 'l';
        case fs::file_status::block_file: return 'b';
        case fs::file_status::character_file: return 'c';
        case fs::file_status::fifo_file: return 'p';
        case fs::file_status::socket_file: return 's';
        default: return '?';
    }
}

std::string iso_seconds(boost::posix_time::ptime const& time) {
    json const whole = json_of(time);
    if (whole.is_null()) return "-";
    std::string const text = whole;
    return text.substr(0, text.find('.')) + 'Z';
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

json json_of(fs::file_status const& found) {
    if (found.type == fs::file_status::file_not_found) return nullptr;
    char octal[12];
    std::snprintf(octal, sizeof octal, "%04o", static_cast<unsigned>(found.permissions));
    return {{"type", type_name(found.type)},
            {"permissions", rwx(found.permissions)},
            {"mode", octal},
            {"size", found.size},
            {"written", json_of(found.last_write_time)},
            {"accessed", json_of(found.last_access_time)},
            {"changed", json_of(found.last_status_change_time)}};
}

json json_of(fs::file_status_light const& found) {
    if (found.type == fs::file_status::file_not_found) return nullptr;
    return {{"type", type_name(found.type)},
            {"size", found.size},
            {"written", json_of(found.last_write_time)}};
}

json status_of(std::u16string const& text) {
    fs::upath const path(text);
    auto const parts = fs::detail::extract_pathname_elements(path.native());
    json error;
    auto const answer = [&](auto query) -> json {
        try {
            return query();
        } catch (fs::FsysExceptionBase const& failure) {
            if (error.is_null()) error = json_of(failure);
            return nullptr;
        }
    };
    json found = {{"native_form", path.string()},
                  {"root", path.root_path().string()},
                  {"parent", to_filesystem(parts.parent_path)},
                  {"filename", to_filesystem(parts.filename)},
                  {"stem", to_filesystem(parts.stem)},
                  {"extension", to_filesystem(parts.extension)},
                  {"exists", answer([&] { return fs::exists(path); })},
                  {"symlink_status", answer([&] { return json_of(fs::symlink_status(path)); })},
                  {"status", answer([&] { return json_of(fs::status(path)); })}};
    if (!error.is_null()) found["error"] = error;
    return found;
}

void print_status(std::ostream& out, std::u16string const& text) {
    out << shown(text) << '\n';
    print_rows(out, status_of(text));
}

json explanation(std::string const& operand, std::u16string const& text) {
    std::u16string const tilde = text.substr(0, text.find(u'/'));
    std::u16string const home = fs::detail::make_expanded_path(tilde, /*suppress_expansion=*/false);
    std::u16string const native = fs::detail::make_native_form(text, /*expand_tilde=*/true);
    std::string const path8 = to_filesystem(native);
    json found = {{"bytes", escaped(operand)},
                  {"utf16", escaped(text)},
                  {"substituted", substituted_bytes(operand, from_filesystem(operand))},
                  {"expanded", home == tilde ? json() : json(to_filesystem(home))},
                  {"collapsed",
                   native.empty() ? 0 : home.size() + text.size() - tilde.size() - native.size()},
                  {"native_form", path8},
                  {"utf8", escaped(path8)},
                  {"elements", json::array()}};
    int error = path8.empty() ? ENOENT : 0;
    std::string reached;
    for (std::size_t end = 1; error == 0 && end <= path8.size(); ++end) {
        if (end != path8.size() && path8[end] != '/' && (end != 1 || path8[0] != '/')) continue;
        reached = path8.substr(0, end);
        found["elements"].push_back(element(reached, error));
    }
    if (error != 0)
        found["error"] = {{"path", reached}, {"message", std::strerror(error)}, {"number", error}};
    if (!found["substituted"].empty())
        found["error"] = {{"path", ""}, {"message", "Invalid UTF-8"}, {"number", 0}};
    return found;
}

}  // namespace kofs

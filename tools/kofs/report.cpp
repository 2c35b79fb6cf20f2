#include "report.hpp"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <vector>

#include <boost/system/system_error.hpp>
#include <ko/filesystem/exceptions/escape.hpp>
#include <nlohmann/json.hpp>

#include "elapsed_time.hpp"

namespace kofs {

namespace fs = ko::filesystem;

using fs::detail::from_filesystem;
using fs::detail::to_filesystem;

namespace {

constexpr int wrong_usage = 2;

/// `bytes` with U+FFFD for each that is not UTF-8.
std::string valid(std::string const& bytes) { return to_filesystem(from_filesystem(bytes)); }

std::string shown(std::string const& text) { return kofs::shown(from_filesystem(text)); }

// Failures

/// The message of the system or the library, without paths.
std::string reason(fs::FsysExceptionBase const& error) {
    auto const* const invalid = dynamic_cast<fs::InvalidArgument const*>(&error);
    if (invalid != nullptr && !invalid->message().empty()) return invalid->message();
    bool const is_supported = error.kind() != fs::error_kind::invalid_operation;
    return std::strerror(is_supported ? error.code().value() : ENOTSUP);
}

/// `text` as in the paths of failures reported by Boost: only the low bytes of its units.
std::u16string low_bytes(std::u16string const& text) {
    std::string bytes;
    for (char16_t const unit : text) bytes += static_cast<char>(unit);
    return from_filesystem(bytes);
}

/// Whether `path`, from an exception, is `operand`.
bool is_operand(arguments const& given, std::string const& operand, std::u16string const& path) {
    std::u16string const native = fs::detail::make_native_form(
        handed_on(given, from_filesystem(operand)), /*expand_tilde=*/true);
    return path == native || path == low_bytes(native) || path == from_filesystem(operand);
}

/// The operands that a failure is about, then the entry of a tree at which it happened, and its other
/// paths that are not operands.
std::string place(arguments const& given, json const& error) {
    std::vector<std::string> operands = given.operands;
    std::vector<std::u16string> entry;
    if (error.contains("entry"))
        for (auto const& each : error["entry"]) entry.push_back(from_filesystem(each));
    json paths = error.value("arguments", json::array());
    paths.insert(paths.begin(), error.value("path", ""));
    // The target exists, whichever path the library names.
    bool const exists = error.value("class", "") == "FileExistsError" && operands.size() == 2;
    if (exists) operands = {operands[1]};
    if (exists && !entry.empty()) paths = json::array();
    std::string others;
    bool names_entry = entry.empty();
    auto const operand_of = [&](std::u16string const& path) {
        return std::find_if(
            given.operands.begin(), given.operands.end(),
            [&](std::string const& operand) { return is_operand(given, operand, path); });
    };
    for (auto const& each : paths) {
        std::u16string path = from_filesystem(each);
        for (std::u16string const& of_entry : entry) {
            if (path != of_entry && path != low_bytes(of_entry)) continue;
            path = of_entry;
            names_entry = true;
        }
        auto const named = operand_of(path);
        if (named != given.operands.end()) {
            if (!exists && &each == &paths.front()) operands = {*named};
        } else if (!path.empty()) {
            others += ": " + kofs::shown(path);
        }
    }
    if (!names_entry && operand_of(entry[exists]) == given.operands.end())
        others = ": " + kofs::shown(entry[exists]) + others;
    std::string text;
    for (std::string const& each : operands)
        text += (text.empty() ? "" : ", ") + (each.empty() ? "''" : shown(each));
    return text + others;
}

void print_failure(arguments const& given, json const& error) {
    std::cout.flush();
    std::string const program = given.command.empty() ? "kofs" : "kofs " + given.command;
    bool const misuse = error.value("class", "") == "usage";
    std::cerr << program << ": ";
    if (!misuse && !given.operands.empty()) std::cerr << place(given, error) << ": ";
    std::cerr << shown(error.value("reason", error.value("message", "")))
              << (misuse ? "; see " + program + " --help" : "") << '\n';
}

// Answers

std::string text_of(json const& value) {
    if (value.is_null() || value.empty() || value == "") return "-";
    if (value.is_string()) return shown(value.get<std::string>());
    if (value.is_boolean()) return value ? "yes" : "no";
    if (!value.is_array()) return value.dump();
    std::string list;
    for (json const& each : value) list += (list.empty() ? "" : ", ") + text_of(each);
    return list;
}

/// The cells of a table's row, except for the name.
std::string cells_of(json const& row) {
    std::string cells;
    for (auto const& [column, cell] : row.items()) {
        if (column == "name") continue;
        if (!cells.empty()) cells += column == "link" ? " -> " : column == "error" ? ": " : " ";
        cells += text_of(cell);
    }
    return cells;
}

int print_answer(command const& chosen, arguments const& given, json const& answer) {
    if (answer == "")
        throw std::runtime_error(given.operands.empty() || !given.operands[0].empty()
                                     ? "the result has a name that is not UTF-8"
                                     : "the path is empty");
    bool const is_object = answer.is_object();
    json error = is_object && answer.contains("error") ? answer["error"] : json();
    bool const nothing =
        is_object && answer.contains("symlink_status") && answer["symlink_status"].is_null();
    bool const failed = answer.is_null() || answer == false || !error.is_null() || nothing;
    if (given.json) {
        print_json(given, "result", answer);
    } else if (answer.is_string()) {
        print_path(given, answer);
    } else if (is_object) {
        if (std::strchr(chosen.operands, '.') != nullptr)
            std::cout << shown(given.operands[0]) << '\n';
        print_rows(std::cout, answer);
        if (!error.is_null()) print_failure(given, error);
    } else {
        std::cout << (answer.is_null() ? "nothing" : text_of(answer)) << '\n';
    }
    return failed ? EXIT_FAILURE : EXIT_SUCCESS;
}

/// Runs the command once. Returns false if the remaining operands must be skipped.
bool run_once(command const& chosen, arguments const& given, int& status) {
    std::unique_ptr<elapsed_time> time;
    try {
        if (chosen.kind == nature::takes_time && !given.json)
            time = elapsed_time::shown(given.command);
        json const answer = chosen.run(given);
        if (chosen.kind == nature::narrates || chosen.kind == nature::lists)
            status = std::max<int>(status, answer);
        else if (chosen.kind == nature::answers)
            status = std::max(status, print_answer(chosen, given, answer));
        else if (given.json)
            print_json(given, "done", true, answer);
        return true;
    } catch (std::exception const& error) {
        time.reset();
        status = std::max(status, report_failure(given, error));
        bool const only_asks = chosen.kind == nature::answers || chosen.kind == nature::lists;
        return only_asks && status != wrong_usage;
    }
}

}  // namespace

int run(command const& chosen, arguments const& given) {
    int status = EXIT_SUCCESS;
    if (given.json && chosen.kind == nature::narrates)
        return report_failure(given, usage_error("--json is not for the tour"));
    if (given.json && given.has("print0"))
        return report_failure(given, usage_error("--json excludes --print0"));
    if (std::strchr(chosen.operands, '.') == nullptr) {
        run_once(chosen, given, status);
        return status;
    }
    for (std::string const& operand : given.operands) {
        arguments one = given;
        one.operands = {operand};
        if (!run_once(chosen, one, status)) break;
    }
    return status;
}

void print_path(arguments const& given, std::string const& path) {
    if (given.has("print0"))
        std::cout << path << '\0';
    else
        std::cout << printed(from_filesystem(path)) << '\n';
}

void print_json(arguments const& given, char const* name, json const& value, json const& more) {
    json operands = json::array();
    for (std::string const& each : given.operands) operands.push_back(valid(each));
    json line = {{"command", given.command.empty() ? json() : json(given.command)},
                 {"operands", operands},
                 {name, value}};
    line.update(more);
    // Flushed, so that a reader knows what was done even if the process is killed.
    std::cout << line.dump(-1, ' ', /*ensure_ascii=*/true) << '\n' << std::flush;
}

int report_failure(arguments const& given, std::exception const& error) {
    json const described = json_of(error);
    if (given.json)
        print_json(given, "error", described);
    else
        print_failure(given, described);
    return described["class"] == "usage" ? wrong_usage : EXIT_FAILURE;
}

entry_failure::entry_failure(std::exception const& error, std::u16string const& from,
                             std::u16string const& to, char const* reason)
    : what_(error.what()), described_(json_of(error)) {
    if (auto const* const other = dynamic_cast<boost::system::system_error const*>(&error))
        described_["reason"] = other->code().message();
    if (reason != nullptr) described_["reason"] = reason;
    if (from.empty()) return;
    described_["entry"] = {{"from", to_filesystem(from)}, {"to", to_filesystem(to)}};
}

json json_of(std::exception const& error) {
    if (auto const* const of_entry = dynamic_cast<entry_failure const*>(&error))
        return of_entry->described();
    auto const* const failure = dynamic_cast<fs::FsysExceptionBase const*>(&error);
    std::string const what = valid(error.what());
    if (failure == nullptr) {
        bool const misuse = dynamic_cast<usage_error const*>(&error) != nullptr;
        return {{"class", misuse ? "usage" : "exception"}, {"what", what}, {"message", what}};
    }
    json list = json::array();
    for (std::u16string const& each : failure->arguments()) list.push_back(to_filesystem(each));
    std::string const& id = failure->message_id();
    return {{"class", id.substr(id.rfind(':') + 1)},
            {"id", id},
            {"what", what},
            {"message", fs::describe(*failure)},
            {"reason", reason(*failure)},
            {"path", to_filesystem(failure->path())},
            {"arguments", list},
            {"number", failure->system_error_number()}};
}

void print_rows(std::ostream& out, json const& object) {
    for (auto const& [name, value] : object.items()) {
        bool const is_shown_already =
            name == "symlink_status" && object.value("status", json()) == value;
        if (name == "error" || is_shown_already) continue;
        std::string label = name;
        std::replace(label.begin(), label.end(), '_', ' ');
        bool const is_table = value.is_array() && !value.empty() && value[0].is_object();
        out << "  " << std::left << std::setw(is_table || value.is_object() ? 0 : 15) << label;
        if (!is_table && !value.is_object()) {
            out << text_of(value) << '\n';
            continue;
        }
        out << '\n';
        for (auto const& [key, row] : value.items())
            out << "    " << std::setw(12) << (is_table ? text_of(row["name"]) : key) << ' '
                << (is_table ? cells_of(row) : text_of(row)) << '\n';
    }
}

std::string shown(std::u16string const& text) { return to_filesystem(fs::detail::escaped(text)); }

std::string printed(std::u16string const& text) {
    return ::isatty(STDOUT_FILENO) != 0 ? shown(text) : to_filesystem(text);
}

std::u16string handed_on(arguments const& given, std::u16string const& operand) {
    return operand.compare(0, 1, u"~") == 0 && !given.has("expand") ? u"./" + operand : operand;
}

}  // namespace kofs

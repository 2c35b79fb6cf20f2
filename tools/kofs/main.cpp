// A tool for the shell on the public interface of ko::filesystem.

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <boost/version.hpp>

#include "command.hpp"
#include "commands.hpp"
#include "report.hpp"

namespace kofs {

namespace {

constexpr char operand_mark = '\x01';

std::string const version =
    "ko::filesystem " KOFS_VERSION ", Boost " + std::to_string(BOOST_VERSION / 100000) + '.' +
    std::to_string(BOOST_VERSION / 100 % 1000) + '.' + std::to_string(BOOST_VERSION % 100);

char const footer[] =
    "Operands are names: the shell expands tildes, kofs only if --expand is given.\n\n"
    "With --json, before or after the command, every line of standard output is an\n"
    "object with \"command\", \"operands\" and one of \"result\" (an answer), \"done\"\n"
    "(true, after a change) and \"error\". A command for any number of paths prints\n"
    "one for each.\n\n"
    "On a terminal, names are shown with control characters escaped, and standard\n"
    "error shows the time that a copy, a move or a removal takes beyond the first\n"
    "second.\n\n"
    "Exit status: 0 success, 1 failure, 2 wrong usage; 128 plus the signal's number\n"
    "if a signal ended the tour.";

constexpr std::size_t help_width = 80;

/// `text` in lines of at most `width` columns, of which the others begin with `indent`.
std::string wrapped(std::string const& text, std::size_t width, std::string const& indent = {}) {
    std::istringstream words(text);
    std::string result;
    std::size_t length = 0;
    for (std::string word; words >> word; result += word, length += word.size()) {
        if (length == 0) continue;
        bool const fits = length + 1 + word.size() <= width;
        result += fits ? " " : '\n' + indent;
        length = fits ? length + 1 : indent.size();
    }
    return result;
}

/// The arguments in the parser's order, last first. Words that are not options are marked, since the
/// parser would read "[a,b]" as a list, "++" as a separator, and the name of a command as another one.
std::vector<std::string> marked(int argc, char** argv) {
    std::vector<std::string> words;
    bool has_command = false;
    bool only_operands = false;
    for (std::string word : std::vector<std::string>(argv + std::min(argc, 1), argv + argc)) {
        if (!only_operands && has_command && word == "--") {
            only_operands = true;
            continue;
        }
        if (only_operands || (has_command && word.compare(0, 1, "-") != 0))
            word.insert(word.begin(), operand_mark);
        else if (!has_command && word.compare(0, 1, "-") != 0) {
            has_command = true;
            std::replace(word.begin(), word.end(), '_', '-');
        }
        words.push_back(std::move(word));
    }
    std::reverse(words.begin(), words.end());
    return words;
}

std::vector<std::string> unmarked(std::vector<std::string> words) {
    for (std::string& word : words)
        if (!word.empty() && word[0] == operand_mark) word.erase(0, 1);
    return words;
}

/// The command, its options and its operands.
std::string synopsis(command const& of) {
    std::string text = std::string("kofs ") + of.name + ' ';
    for (auto const& set : alternatives(of.options)) {
        std::string words;
        for (option const& each : set) {
            words += (words.empty() ? "" : " | ") + std::string("--") + each.name;
            if (each.value != nullptr) words += std::string("=") + each.value;
        }
        text += '[' + words + "] ";
    }
    return text + of.operands;
}

/// Help of at most 80 columns, with the options that exclude each other in the usage line. It omits the section of operands: the usage line names them.
class formatter : public CLI::Formatter {
public:
    explicit formatter(std::vector<command> const& all) : all_(all) { column_width(24); }

    std::string make_positionals(CLI::App const*) const override { return {}; }
    std::string make_usage(CLI::App const* app, std::string name) const override {
        for (command const& each : all_) {
            if (app->get_name() != each.name) continue;
            std::string const indent(std::strlen("Usage: kofs ") + std::strlen(each.name) + 1, ' ');
            return wrapped("Usage: " + synopsis(each), help_width, indent) + '\n';
        }
        return CLI::Formatter::make_usage(app, name);
    }
    std::string make_option_opts(CLI::Option const* option) const override {
        return option->get_type_name().empty() ? "" : '=' + option->get_type_name();
    }
    std::string make_option_desc(CLI::Option const* option) const override {
        return in_column(option->get_description());
    }
    std::string make_subcommand(CLI::App const* of) const override {
        std::ostringstream out;
        CLI::detail::format_help(out, of->get_name(), in_column(of->get_description()),
                                 get_column_width());
        return out.str();
    }

private:
    std::string in_column(std::string const& text) const {
        return wrapped(text, help_width - get_column_width());
    }

    std::vector<command> const& all_;
};

/// Adds the parser of a command and returns its operands in order.
std::vector<CLI::Option*> add_command(CLI::App& app, command const& of) {
    CLI::App& parser = *app.add_subcommand(of.name, of.help)->allow_extras()->group("Commands");
    std::vector<CLI::Option*> operands;
    std::istringstream names(of.operands);
    for (std::string name; names >> name;) {
        bool const required = name[0] != '[';
        if (!required) name = name.substr(1, name.size() - 2);
        std::size_t const dots = name.find("...");
        operands.push_back(parser.add_option(name.substr(0, dots))->required(required));
        if (dots != name.npos) operands.back()->expected(CLI::detail::expected_max_vector_size);
    }
    for (auto const& set : alternatives(of.options)) {
        std::vector<CLI::Option*> others;
        for (option const& each : set) {
            std::string const name = std::string("--") + each.name;
            CLI::Option* const made =
                each.value == nullptr ? parser.add_flag(name, each.help)->disable_flag_override()
                                      : parser.add_option(name, CLI::callback_t(), each.help)
                                            ->type_name(each.value)
                                            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
            for (CLI::Option* const other : others) made->excludes(other);
            others.push_back(made);
        }
    }
    if (of.kind != nature::narrates)
        parser.add_flag("--json", "Print every answer and every failure as a line of JSON")
            ->disable_flag_override();
    return operands;
}

/// The complaint about the first word that `parser` didn't use, if any.
std::string leftover(CLI::App const& parser, char const* word_is) {
    std::vector<std::string> const words = parser.remaining();
    if (words.empty()) return {};
    bool const is_option = words[0].compare(0, 1, "-") == 0;
    return (is_option ? "no such option: " : word_is) + unmarked(words)[0];
}

/// Runs the command of the command line and returns the exit status.
int run_command_line(int argc, char** argv) {
    arguments given;
    std::vector<std::string> words = marked(argc, argv);
    bool const no_words = words.empty();
    given.json = std::find(words.begin(), words.end(), "--json") != words.end();

    std::vector<command> const all = commands();
    CLI::App app("Queries, makes, moves, copies and removes files, with ko::filesystem.", "kofs");
    app.set_help_flag("-h,--help", "Print this help, or that of the command before it");
    app.set_version_flag("--version", version, "Print the versions of the library and of Boost");
    app.add_flag("--json", "Print every answer and every failure as a line of JSON");
    app.allow_extras()->require_subcommand(0, 1)->formatter(std::make_shared<formatter>(all));
    app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    std::map<std::string, std::vector<CLI::Option*>> operands;
    for (command const& each : all) operands[each.name] = add_command(app, each);
    app.footer(footer);  // not inherited by the commands
    if (no_words) {
        std::cerr << app.help();
        return report_failure(given, usage_error("no command"));
    }
    std::string complaint;
    try {
        app.parse(words);
    } catch (CLI::Success const& asked) {  // the help or the version
        return app.exit(asked, std::cout, std::cerr);
    } catch (CLI::ParseError const& error) {
        complaint = error.what();
    }
    std::vector<CLI::App*> const parsed_commands = app.get_subcommands();
    if (parsed_commands.empty()) {
        if (complaint.empty()) complaint = leftover(app, "no such command: ");
        return report_failure(given, usage_error(complaint.empty() ? "no command" : complaint));
    }
    CLI::App const& parser = *parsed_commands[0];
    given.command = parser.get_name();
    for (CLI::Option const* const each : operands[given.command])
        for (std::string& operand : unmarked(each->results())) given.operands.push_back(operand);
    if (complaint.empty()) complaint = leftover(app, "") + leftover(parser, "too many operands: ");
    if (!complaint.empty()) return report_failure(given, usage_error(complaint));
    auto const chosen = std::find_if(
        all.begin(), all.end(), [&](command const& each) { return each.name == given.command; });
    for (option const& each : chosen->options) {
        CLI::Option const& parsed = *parser.get_option(std::string("--") + each.name);
        if (!parsed.empty()) given.options[each.name] = unmarked(parsed.results());
    }
    return run(*chosen, given);
}

}  // namespace

}  // namespace kofs

int main(int argc, char** argv) try {
    int const status = kofs::run_command_line(argc, argv);
    if (std::cout.flush()) return status;
    std::cerr << "kofs: the output could not be written\n";
    return status == EXIT_SUCCESS ? EXIT_FAILURE : status;
} catch (std::exception const& error) {
    std::cerr << "kofs: " << error.what() << '\n';
    return EXIT_FAILURE;
}

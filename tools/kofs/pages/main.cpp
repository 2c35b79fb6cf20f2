// Fills in what the manual and the completions of kofs say about its commands.
//   kofs_pages TEMPLATE PAGE
// A line "@NAME ARGUMENT" of the template is replaced by what the table below has for NAME.

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "../commands.hpp"

namespace kofs {

namespace {

command const& find(std::string const& name) {
    static std::vector<command> const all = commands();
    auto const found = std::find_if(all.begin(), all.end(),
                                    [&](command const& each) { return each.name == name; });
    if (found == all.end()) throw std::runtime_error("no such command: " + name);
    return *found;
}

std::string replaced(std::string text, std::string const& what, std::string const& with) {
    for (std::size_t at = 0; (at = text.find(what, at)) != text.npos; at += with.size())
        text.replace(at, what.size(), with);
    return text;
}

/// The words of `text`, which are separated by `separator`.
std::vector<std::string> split(std::string const& text, char separator) {
    std::istringstream in(text);
    std::vector<std::string> words;
    for (std::string word; std::getline(in, word, separator);)
        if (!word.empty()) words.push_back(word);
    return words;
}

bool takes_permissions(option const& each) {
    return each.value != nullptr && std::strcmp(each.value, "PERMS") == 0;
}

bool takes_one_of(option const& each) {
    return each.value != nullptr && std::strchr(each.value, '|') != nullptr;
}

// The manual

std::string lowercase(std::string text) {
    for (char& each : text)
        if (each >= 'A' && each <= 'Z') each = static_cast<char>(each - 'A' + 'a');
    return text;
}

std::string in_manual(option const& each) {
    std::string flag = std::string("Fl -") + each.name;
    if (each.value == nullptr) return flag;
    if (!takes_one_of(each)) return flag + " Ns = Ns Ar " + lowercase(each.value);
    return flag + " Ns = Ns Cm " + replaced(each.value, "|", " Ns | Ns Cm ");
}

/// `Ar` for each operand like "PATH...", in `Op` if it is like "[BASE]".
std::string in_manual(std::string operand) {
    bool const is_optional = operand[0] == '[';
    if (is_optional) operand = operand.substr(1, operand.size() - 2);
    return (is_optional ? ".Op Ar " : ".Ar ") + replaced(lowercase(operand), "...", " ...") + '\n';
}

void manual_command(std::ostream& out, std::string const& name) {
    command const& of = find(name);
    out << ".It Xo\n.Cm " << name << '\n';
    for (auto const& set : alternatives(of.options)) {
        std::string words;
        for (option const& each : set) words += (words.empty() ? "" : " | ") + in_manual(each);
        out << ".Op " << words << '\n';
    }
    for (std::string const& operand : split(of.operands, ' ')) out << in_manual(operand);
    out << ".Xc\n";
}

void manual_options(std::ostream& out, std::string const& name) {
    for (option const& each : find(name).options)
        out << ".It " << in_manual(each) << '\n' << each.help << ".\n";
}

void manual_permissions(std::ostream& out, std::string const&) {
    // A request takes at most nine arguments in old formatters.
    std::vector<std::string> const words = permission_words();
    for (std::size_t i = 0; i != words.size(); ++i)
        out << (i % 4 == 0 ? ".Cm " : " ") << words[i] << (i + 1 == words.size() ? " ." : " ,")
            << (i % 4 == 3 || i + 1 == words.size() ? "\n" : "");
}

// Completions

void names(std::ostream& out, std::string const&) {
    for (command const& each : commands()) out << "    " << each.name << '\n';
}

void permissions(std::ostream& out, std::string const&) {
    for (std::string const& word : permission_words()) out << "    " << word << '\n';
}

void bash_options(std::ostream& out, std::string const&) {
    for (command const& each : commands()) {
        out << "    " << each.name << ") echo";
        for (option const& of : each.options)
            out << " --" << of.name << (of.value == nullptr ? "" : "=");
        out << (each.kind == nature::narrates ? "" : " --json") << " --help ;;\n";
    }
}

void bash_values(std::ostream& out, std::string const&) {
    for (command const& each : commands())
        for (option const& of : each.options) {
            if (!takes_permissions(of) && !takes_one_of(of)) continue;
            out << "    '" << each.name << " --" << of.name << "') echo "
                << (takes_permissions(of) ? "$_kofs_permissions" : replaced(of.value, "|", " "))
                << " ;;\n";
        }
}

std::string in_zsh(std::string const& text) { return replaced(text, "'", "'\\''"); }

void zsh_commands(std::ostream& out, std::string const&) {
    for (command const& each : commands())
        out << "        '" << each.name << ':' << in_zsh(each.help) << "'\n";
}

std::string in_zsh(option const& each, std::vector<option> const& set) {
    std::string others;
    for (option const& other : set)
        if (other.name != each.name)
            others += (others.empty() ? "" : " ") + std::string("--") + other.name;
    std::string text = (others.empty() ? "" : '(' + others + ')') +
                       (takes_permissions(each) ? "*--" : "--") + each.name;
    if (each.value != nullptr) text += '=';
    text += '[' + replaced(in_zsh(each.help), "]", "\\]") + ']';
    if (takes_permissions(each)) return text + ":permissions:_kofs_permissions";
    if (takes_one_of(each)) return text + ":value:(" + replaced(each.value, "|", " ") + ')';
    return each.value == nullptr ? text : text + ':' + lowercase(each.value) + ": ";
}

void zsh_options(std::ostream& out, std::string const&) {
    for (command const& each : commands()) {
        out << "    " << each.name << ")\n        options=(";
        for (auto const& set : alternatives(each.options))
            for (option const& of : set) out << '\'' << in_zsh(of, set) << "'\n            ";
        out << (each.kind == nature::narrates ? "" : "'--json[Print JSON]'") << ") ;;\n";
    }
}

std::map<std::string, void (*)(std::ostream&, std::string const&)> const fillings = {
    {"@command", manual_command},
    {"@options", manual_options},
    {"@manual-permissions", manual_permissions},
    {"@names", names},
    {"@permissions", permissions},
    {"@bash-options", bash_options},
    {"@bash-values", bash_values},
    {"@zsh-commands", zsh_commands},
    {"@zsh-options", zsh_options},
};

void fill_in(std::istream& in, std::ostream& out) {
    for (std::string line; std::getline(in, line);) {
        std::size_t const blank = std::min(line.find(' '), line.size());
        if (line[0] != '@') {
            out << line << '\n';
        } else {
            fillings.at(line.substr(0, blank))(out, line.substr(std::min(blank + 1, line.size())));
        }
    }
}

}  // namespace

}  // namespace kofs

int main(int argc, char** argv) try {
    if (argc != 3) throw std::runtime_error("one template and one page are needed");
    std::ifstream in(argv[1]);
    std::ostringstream page;
    if (!in) throw std::runtime_error("no template");
    kofs::fill_in(in, page);
    if (!(std::ofstream(argv[2]) << page.str() << std::flush))
        throw std::runtime_error("the page could not be written");
    return EXIT_SUCCESS;
} catch (std::exception const& error) {
    std::cerr << "kofs_pages: " << error.what() << '\n';
    return EXIT_FAILURE;
}

#include <ko/filesystem/exceptions/invalid_argument.hpp>

#include <iomanip>
#include <ios>
#include <locale>
#include <sstream>

namespace ko::filesystem {

namespace {

/// Terminates the process if memory runs out: a truncated description would mislead.
std::string printable(std::u16string const& text) noexcept {
    std::ostringstream out;
    out.imbue(std::locale::classic());      // a global locale may group digits
    out.exceptions(std::ios_base::badbit);  // else lack of memory would only truncate the text
    out << std::hex << std::uppercase << std::setfill('0');
    for (char16_t const unit : text) {
        if (unit >= 0x20 && unit <= 0x7F)
            out << static_cast<char>(unit);
        else
            out << "\\u" << std::setw(4) << static_cast<unsigned>(unit);
    }
    return out.str();
}

}  // namespace

InvalidArgument::InvalidArgument(std::string const& message, std::u16string const& path,
                                 std::vector<std::u16string> const& arguments)
    : FsysExceptionBase("ko:filesystem:InvalidArgument", error_kind::invalid_argument, path,
                        arguments, 0),
      message_(message) {}

InvalidArgument::~InvalidArgument() = default;

char const* InvalidArgument::what() const noexcept {
    what_text_ = message_id();
    if (!message_.empty()) what_text_.append(": ").append(message_);
    if (!path().empty()) what_text_.append(": {").append(printHelper(path())).append("}");
    return what_text_.c_str();
}

std::string InvalidArgument::printHelper(std::u16string const& text) const {
    return printable(text);
}

}  // namespace ko::filesystem

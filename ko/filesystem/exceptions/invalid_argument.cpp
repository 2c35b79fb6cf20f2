#include <ko/filesystem/exceptions/invalid_argument.hpp>

#include <ko/filesystem/exceptions/escape.hpp>

namespace ko::filesystem {

namespace {

/// Terminates the process if memory runs out: a truncated description would mislead.
std::string printable(std::u16string const& text) noexcept {
    std::string result;
    for (char16_t const unit : text) {
        if (unit >= 0x20 && unit <= 0x7F)
            result += static_cast<char>(unit);
        else
            detail::append_escape(result, unit);
    }
    return result;
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

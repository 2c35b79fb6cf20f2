#include <ko/filesystem/exceptions/describe.hpp>

#include <ko/filesystem/detail/encoding.hpp>
#include <ko/filesystem/exceptions/escape.hpp>
#include <ko/filesystem/exceptions/invalid_argument.hpp>

namespace ko::filesystem {

namespace {

std::string on_one_line(std::u16string const& text) {
    return detail::to_filesystem(detail::escaped(text));
}

/// For foreign texts: the system's depend on the locale, and callers may construct any message.
std::string on_one_line(std::string const& text) {
    return on_one_line(detail::from_filesystem(text));
}

std::string what_happened(FsysExceptionBase const& error) {
    switch (error.kind()) {
        case error_kind::invalid_argument:
            if (auto const* const invalid = dynamic_cast<InvalidArgument const*>(&error))
                if (!invalid->message().empty()) return on_one_line(invalid->message());
            return "invalid argument";
        case error_kind::invalid_operation: return "not possible on this platform";
        case error_kind::file_name_too_large: return "name too long";
        case error_kind::access_denied: return "permission denied";
        case error_kind::path_not_found:
            return error.path().empty() ? "cannot find the path" : "cannot find";
        case error_kind::not_directory_error: return "not a directory";
        case error_kind::directory_not_empty: return "directory not empty";
        case error_kind::file_is_directory: return "is a directory";
        case error_kind::file_exists_error: return "already exists";
        case error_kind::system_error: return on_one_line(error.code().message());
        default: return on_one_line(std::string(error.what()));
    }
}

}  // namespace

std::string describe(FsysExceptionBase const& error) {
    std::string line = what_happened(error);
    char const* separator = error.kind() == error_kind::path_not_found ? " " : ": ";
    auto const append = [&](std::u16string const& text) {
        if (text.empty()) return;
        line += separator;
        line += on_one_line(text);
        separator = ", ";
    };
    append(error.path());
    for (std::u16string const& argument : error.arguments()) append(argument);
    return line;
}

std::string describe(std::exception const& error) {
    auto const* const own = dynamic_cast<FsysExceptionBase const*>(&error);
    return own != nullptr ? describe(*own) : on_one_line(std::string(error.what()));
}

}  // namespace ko::filesystem

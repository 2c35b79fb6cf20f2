#pragma once

#include <cerrno>
#include <exception>
#include <string>
#include <utility>

#include <ko/filesystem.hpp>

#include "support/files.hpp"

namespace ko::filesystem::testing {

inline std::string error_name(int number) {
    std::pair<int, char const*> const names[] = {
        {EBUSY, "EBUSY"},   {EIO, "EIO"},       {ELOOP, "ELOOP"},
        {EMFILE, "EMFILE"}, {EPERM, "EPERM"},   {ENOSPC, "ENOSPC"},
        {EROFS, "EROFS"},   {ENOSYS, "ENOSYS"}, {EXDEV, "EXDEV"},
    };
    for (auto const& [known, name] : names)
        if (known == number) return name;
    return std::to_string(number);
}

/// What comes of `action`, so that a table can say it in a word: "ok", or what is thrown: its
/// class, an InvalidArgument's message in quotes, the path and the arguments in brackets, a
/// SystemError's number. `scratch` is written "@" in paths.
template <class Action>
std::string outcome(scratch_dir const& scratch, Action action) {
    auto const bracketed = [&scratch](std::u16string const& path) {
        std::string text = utf8(path);
        std::string const root = utf8(scratch / u"");
        for (std::size_t at = 0; (at = text.find(root, at)) != text.npos; ++at)
            text.replace(at, root.size() - 1, "@");
        for (std::size_t at = 0; (at = text.find('\0', at)) != text.npos;)
            text.replace(at, 1, "\\0");
        return " [" + text + "]";
    };
    try {
        action();
        return "ok";
    } catch (FsysExceptionBase const& error) {
        std::string text = error.message_id().substr(error.message_id().rfind(':') + 1);
        auto const* const invalid = dynamic_cast<InvalidArgument const*>(&error);
        if (invalid != nullptr) text += " \"" + invalid->message() + '"';
        if (!error.path().empty()) text += bracketed(error.path());
        for (std::u16string const& argument : error.arguments())
            if (!argument.empty()) text += bracketed(argument);
        int const number = error.system_error_number();
        return number == 0 ? text : text + ' ' + error_name(number);
    } catch (std::exception const& error) {
        return std::string("std: ") + error.what();
    }
}

}  // namespace ko::filesystem::testing

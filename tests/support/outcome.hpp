#pragma once

#include <algorithm>
#include <cerrno>
#include <exception>
#include <string>
#include <type_traits>
#include <utility>

#include <ko/filesystem.hpp>

#include "support/files.hpp"

namespace ko::filesystem::testing {

inline std::string error_name(int number) {
    for (auto const& [known, name] : {std::pair(EBUSY, "EBUSY"),
                                      {EIO, "EIO"},
                                      {ELOOP, "ELOOP"},
                                      {EMFILE, "EMFILE"},
                                      {EPERM, "EPERM"},
                                      {ENOSPC, "ENOSPC"},
                                      {EROFS, "EROFS"},
                                      {ENOMEM, "ENOMEM"},
                                      {ENOSYS, "ENOSYS"}})
        if (known == number) return name;
    return std::to_string(number);
}

/// What comes of `action`, in a word for a table: the result (yes or no for truth), "ok" where
/// there is none, or what is thrown: the class, the message of an InvalidArgument in quotes, the
/// path and the arguments in brackets, the number of a SystemError. `root` is written "@", a zero
/// "\0".
template <class Action>
std::string outcome(std::string const& root, Action action) {
    auto const shown = [&root](std::u16string const& path) {
        std::string text = utf8(path);
        for (std::size_t at = 0; (at = text.find(root, at)) != text.npos; ++at)
            text.replace(at, root.size(), "@");
        for (std::size_t at = 0; (at = text.find('\0', at)) != text.npos;)
            text.replace(at, 1, "\\0");
        return text;
    };
    try {
        using result = std::decay_t<decltype(action())>;
        if constexpr (std::is_void_v<result>)
            return action(), "ok";
        else if constexpr (std::is_same_v<result, bool>)
            return action() ? "yes" : "no";
        else if constexpr (std::is_same_v<result, std::string>)
            return action();
        else if constexpr (std::is_same_v<result, upath>)
            return shown(action().native());
        else
            return shown(action());
    } catch (FsysExceptionBase const& error) {
        std::string text = error.message_id().substr(error.message_id().rfind(':') + 1);
        if (auto const* const invalid = dynamic_cast<InvalidArgument const*>(&error))
            text += " \"" + invalid->message() + '"';
        if (!error.path().empty()) text += " [" + shown(error.path()) + ']';
        for (std::u16string const& argument : error.arguments())
            if (!argument.empty()) text += " [" + shown(argument) + ']';
        int const number = error.system_error_number();
        return number == 0 ? text : text + ' ' + error_name(number);
    } catch (std::exception const& error) {
        return std::string("std: ").append(error.what());
    }
}

}  // namespace ko::filesystem::testing

/// In a test with a scratch directory of that name: what comes of the expression is what is
/// expected.
#define TELLS(expression, expected)                                                                \
    EXPECT_EQ(ko::filesystem::testing::outcome(this->scratch.path8(), [&] { return expression; }), \
              expected)

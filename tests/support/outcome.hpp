#pragma once

#include <map>
#include <tuple>
#include <type_traits>

#include "support/files.hpp"

namespace ko::filesystem::test_support {

/// The error numbers in the manual pages of the calls, and 0 for a listing that just ends.
#define NAMED(error) \
    { error, #error }
inline std::map<int, std::string> const error_names = {
    NAMED(0),          NAMED(EACCES),    NAMED(EAGAIN),       NAMED(EBADF),   NAMED(EBUSY),
    NAMED(ECANCELED),  NAMED(EDQUOT),    NAMED(EEXIST),       NAMED(EFAULT),  NAMED(EFBIG),
    NAMED(EINTR),      NAMED(EINVAL),    NAMED(EIO),          NAMED(EISDIR),  NAMED(ELOOP),
    NAMED(EMFILE),     NAMED(EMLINK),    NAMED(ENAMETOOLONG), NAMED(ENFILE),  NAMED(ENOENT),
    NAMED(ENOMEM),     NAMED(ENOSPC),    NAMED(ENOSYS),       NAMED(ENOTDIR), NAMED(ENOTEMPTY),
    NAMED(EOPNOTSUPP), NAMED(EOVERFLOW), NAMED(EPERM),        NAMED(ERANGE),  NAMED(EROFS),
    NAMED(ETXTBSY),    NAMED(EXDEV)};
#undef NAMED

inline std::string const no_path = "InvalidArgument \"Empty Path not permitted\"";
inline std::string const no_absolute_path = "InvalidArgument \"Absolute path not permitted\"";

/// Yes or no for a bool; a number; a text or a path as UTF-8.
template <class Value>
std::string text_of(Value const& value) {
    if constexpr (std::is_same_v<Value, bool>)
        return value ? "yes" : "no";
    else if constexpr (std::is_integral_v<Value>)
        return std::to_string(value);
    else if constexpr (std::is_same_v<Value, upath>)
        return value.string();
    else if constexpr (std::is_convertible_v<Value, std::string>)
        return value;
    else
        return utf8(value);
}

/// The values, each followed by a bar.
template <class... Values>
std::string joined(Values const&... values) {
    return ((text_of(values) + '|') + ...);
}

/// The result of `action`, "ok" if it has none, or a summary of the exception it throws: the class,
/// the message of an InvalidArgument in quotes, the path and the arguments in brackets ("[]" for no
/// path before an argument), the error number. `root` is written "@", a zero "\0".
template <class Action>
std::string outcome(std::string const& root, Action action) {
    auto const relative = [&root](auto const& value) {
        std::string text = text_of(value);
        for (std::size_t at = 0; !root.empty() && (at = text.find(root, at)) != text.npos; ++at)
            text.replace(at, root.size(), "@");
        for (std::size_t at; (at = text.find('\0')) != text.npos;) text.replace(at, 1, "\\0");
        return text;
    };
    try {
        if constexpr (std::is_void_v<decltype(action())>)
            return action(), "ok";
        else
            return relative(action());
    } catch (FsysExceptionBase const& error) {
        std::string text = error.message_id().substr(error.message_id().rfind(':') + 1), arguments;
        if (auto const* const invalid = dynamic_cast<InvalidArgument const*>(&error))
            text += " \"" + invalid->message() + '"';
        for (std::u16string const& argument : error.arguments())
            if (!argument.empty()) arguments += " [" + relative(argument) + ']';
        if (!error.path().empty() || !arguments.empty())
            text += " [" + relative(error.path()) + ']';
        int const number = error.system_error_number();
        return text + arguments + (number == 0 ? "" : ' ' + error_names.at(number));
    } catch (std::exception const& error) {
        return std::string("std: ").append(error.what());
    }
}

/// A row of `expect`: the path or the two paths of a call, and its outcome.
inline auto row(std::u16string const& path, std::string const& expected,
                int line = __builtin_LINE()) {
    return std::tuple(std::tuple(path), expected, line);
}
inline auto row(std::u16string const& a, std::u16string const& b, std::string const& expected,
                int line = __builtin_LINE()) {
    return std::tuple(std::tuple(a, b), expected, line);
}

/// A test with tables of outcomes, checked with texts and with path objects.
class table_test : public scratch_test {
protected:
    template <class Call, class... Row>
    void expect(Call call, Row const&... rows) const {
        auto const check = [&](auto const& made, auto const& row) {
            auto const& [paths, expected, line] = row;
            auto const result = [&, &p = paths] { return std::apply(made, p); };
            EXPECT_EQ(outcome(scratch.path8(), result), expected) << "row in line " << line;
        };
        auto const with_objects = [&](auto const&... p) { return call(upath(p)...); };
        if (with_texts) (check(call, rows), ...);
        if (with_paths) (check(with_objects, rows), ...);
    }
    bool with_texts = true, with_paths = true;
};

}  // namespace ko::filesystem::test_support

/// All overloads of an operation, for `expect`; perhaps with arguments that follow the paths.
#define LIFT(operation) [](auto const&... p) { return operation(p...); }
#define WITH(operation, ...) [=](auto const&... p) { return operation(p..., __VA_ARGS__); }

/// Compares the outcome of an expression, in a test with a scratch directory.
#define EXPECT_OUTCOME(expression, expected) \
    EXPECT_EQ(test_support::outcome(this->scratch.path8(), [&] { return expression; }), expected)

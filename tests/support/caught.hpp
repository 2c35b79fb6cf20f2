#pragma once

#include <exception>
#include <optional>

#include <gtest/gtest.h>

namespace ko::filesystem::testing {

/// The `Error` that `action` throws; a test failure, and nothing, when it throws something else or
/// not at all.
template <class Error, class Action>
std::optional<Error> caught(Action action) {
    try {
        action();
        ADD_FAILURE() << "nothing was thrown";
    } catch (Error const& error) {
        return error;
    } catch (std::exception const& error) {
        ADD_FAILURE() << "another exception was thrown: " << error.what();
    }
    return std::nullopt;
}

}  // namespace ko::filesystem::testing

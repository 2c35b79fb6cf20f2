#pragma once

#include <functional>
#include <string>
#include <vector>

namespace ko::filesystem::testing {

/// Records the system calls of the process while it lives, and makes chosen ones fail. The program
/// that links interposer.cpp defines the calls itself and so stands before the C library. One
/// thread only, one recorder at a time.
class call_recorder {
public:
    /// `root` is left out of recorded paths, with the slash behind it.
    explicit call_recorder(std::string root);
    call_recorder(call_recorder const&) = delete;
    call_recorder& operator=(call_recorder const&) = delete;
    ~call_recorder();

    /// Makes the call that would be recorded as `call` fail with `error`, the `nth` time it is
    /// made.
    void fail(std::string call, int error, int nth = 1);
    /// Makes the recorded call number `index`, from 0, fail with `error`.
    void fail_at(int index, int error);
    /// Does `action` before the call recorded as `call` is made for the `nth` time.
    void before(std::string call, std::function<void()> action, int nth = 1);

    /// Every call as "name path", or its name alone when it has no path; readdir is left out.
    std::vector<std::string> const& calls() const noexcept { return calls_; }

    /// For the calls that stand in place of the system's: false, with errno set, when it must fail.
    bool admit(char const* name, char const* path, char const* second_path = nullptr);

private:
    struct plan {
        std::string call;
        int nth;
        int error;
        std::function<void()> action;
    };

    std::string shown(char const* path) const;

    std::string root_;
    std::vector<plan> plans_;
    int failing_index_ = -1;
    int failing_error_ = 0;
    std::vector<std::string> calls_;
    bool paused_ = false;
};

}  // namespace ko::filesystem::testing

// Included by all tests, with what most of them need.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <ko/filesystem.hpp>

namespace ko::filesystem::test_support {

inline std::string utf8(std::u16string const& text) { return detail::to_filesystem(text); }
inline std::u16string utf16(std::string const& text) { return detail::from_filesystem(text); }

inline void must(bool succeeded) {
    if (!succeeded) throw std::system_error(errno, std::generic_category());
}

/// A directory for one test, made with plain system calls and removed with its contents.
class scratch_dir {
public:
    explicit scratch_dir(std::string const& parent = std::filesystem::temp_directory_path())
        : path_(parent + "/ko-test-XXXXXX") {
        must(::mkdtemp(path_.data()) != nullptr && ::chmod(path_.c_str(), 0755) == 0);
    }
    scratch_dir(scratch_dir const&) = delete;
    ~scratch_dir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    std::string const& path8() const noexcept { return path_; }
    std::u16string operator/(std::u16string const& p) const { return utf16(path_) + u'/' + p; }

    /// Makes a "directory/", a "file: with its content", a "link -> target", a "fifo|", or an empty
    /// file each, in this order, with the same modes for any umask.
    void make(std::vector<std::string> const& entries) const {
        for (std::string const& entry : entries) {
            std::size_t const arrow = entry.find(" -> "), end = entry.find_first_of(":|");
            std::string const path = path_ + '/' + entry.substr(0, std::min(arrow, end));
            mode_t const mode = path.back() == '/' ? 0755 : 0644;
            if (arrow != entry.npos)
                must(::symlink(entry.substr(arrow + 4).c_str(), path.c_str()) == 0);
            else if (path.back() == '/')
                must(::mkdir(path.c_str(), mode) == 0);
            else if (entry.back() == '|')
                must(::mkfifo(path.c_str(), mode) == 0);
            else
                std::ofstream(path, std::ios::binary)
                    << entry.substr(end == entry.npos ? entry.size() : end + 2);
            must(arrow != entry.npos || ::chmod(path.c_str(), mode) == 0);
        }
    }
    std::u16string file(std::u16string const& name, std::string const& content = {}) const {
        return make({utf8(name) + ": " + content}), *this / name;
    }

    std::string content(std::u16string const& name) const {
        std::ifstream stream(utf8(*this / name), std::ios::binary);
        must(stream.good());
        return {std::istreambuf_iterator<char>(stream), {}};
    }

private:
    std::string path_;
};

/// A directory on another file system than the working directory, or empty if there is none.
inline std::string directory_on_another_file_system() {
    char const* const other = "/dev/shm";
    struct stat here, there;
    bool const found = ::stat(other, &there) == 0 && ::stat(".", &here) == 0 &&
                       here.st_dev != there.st_dev && ::access(other, W_OK) == 0;
    return found ? other : "";
}

/// A test whose working directory is its own scratch directory, with the real path.
class scratch_test : public ::testing::Test {
protected:
    scratch_test() { must(::chdir(scratch.path8().c_str()) == 0); }
    ~scratch_test() override { static_cast<void>(::chdir(before_.c_str())); }

    scratch_dir scratch{std::filesystem::canonical(std::filesystem::temp_directory_path())};

private:
    std::string before_ = std::filesystem::current_path();
};

/// Sets an environment variable, or unsets it if null, during its lifetime.
class environment_guard {
public:
    environment_guard(char const* name, char const* value) : name_(name) {
        if (char const* const old = std::getenv(name)) old_ = old;
        set(value);
    }
    environment_guard(environment_guard const&) = delete;
    ~environment_guard() { set(old_ ? old_->c_str() : nullptr); }

private:
    void set(char const* value) const {
        value == nullptr ? ::unsetenv(name_) : ::setenv(name_, value, 1);
    }

    char const* const name_;
    std::optional<std::string> old_;
};

/// Runs `action` in a child process without root's rights, and fails if it does.
template <class Action>
void as_unprivileged_child(Action action) {
    pid_t const child = ::fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        if (::getuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0)) std::_Exit(2);
        action();
        std::fflush(nullptr);
        std::_Exit(::testing::Test::HasFailure() ? 1 : 0);
    }
    int result = -1;
    ASSERT_EQ(::waitpid(child, &result, 0), child);
    EXPECT_EQ(result, 0) << "see the failures above";
}

}  // namespace ko::filesystem::test_support

// What can't be met on a real file system, and which calls an operation makes.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include <ko/filesystem.hpp>

#include "support/files.hpp"
#include "support/outcome.hpp"
#include "support/system_calls.hpp"

namespace ko::filesystem {
namespace {

using calls = std::vector<std::string>;
using recorder = testing::call_recorder;
using testing::utf8;

/// The tree d/s/f and the file f.
class SystemCalls : public testing::scratch_test {
protected:
    SystemCalls() {
        make_tree();
        scratch.file(u"f");
    }

    void make_tree() {
        std::filesystem::remove_all("d");
        std::filesystem::create_directories("d/s");
        scratch.file(u"d/s/f");
    }
};

TEST_F(SystemCalls, AreThoseOfTheOperationAndNoOthers) {
    struct {
        std::function<void()> action;
        calls expected;
    } const rows[] = {
        {[] { exists(u"f"), status(u"f"), symlink_status(u"f"), status_express_light(u"f"); },
         {"stat f", "stat f", "lstat f", "stat f"}},
        {[] { exists(u""), status(u""), remove(u""), remove_all(u""), change_current_path(u""); },
         {}},
        {[] { access(u"f", access_read), permissions(u"f", 0600); },
         {"access f", "stat f", "chmod f"}},
        {[] { get_current_path(), change_current_path(u"."), absolute(u"x", u"/a"); },
         {"getcwd", "chdir ."}},
        {[] { create_directory(u"n"), create_directories(u"x/y"); },
         {"mkdir n", "mkdir x", "mkdir x/y"}},
        {[] { ensure_directories(u"x/y"), ensure_directories(u"x/z"), ensure_directories(u"v/w"); },
         {"stat x/y", "stat x/z", "mkdir x/z", "stat v/w", "mkdir v/w", "mkdir v", "mkdir v/w"}},
        {[] { create_symlink(u"t", u"m"), read_symlink(u"m"); },
         {"stat m", "symlink t m", "readlink m"}},
        {[] { read_symlink(u"/endless/5000"); }, calls(5, "readlink /endless/5000")},
        {[] { rename(u"m", u"o"); }, {"rename m o"}},
        {[] { copy_symlink(u"o", u"p"); }, {"lstat o", "readlink o", "stat p", "symlink t p"}},
        {[] { remove(u"o"), remove(u"n"), remove_symlink(u"p"), remove_directory(u"x/y"); },
         {"lstat o", "unlink o", "lstat n", "rmdir n", "unlink p", "rmdir x/y"}},
        {[] { canonical(u"/"); }, {"stat /", "realpath /"}},
        {[] { static_cast<void>(std::distance(recursive_directory_iterator(u"d"), {})); },
         {"openat d", "fdopendir d", "openat d/s", "fdopendir d/s", "closedir d/s", "closedir d"}},
        {[] { remove_all(u"d"); },
         {"lstat d", "openat d", "close", "opendir d",  // the directory is one
          "lstat d/s", "openat d", "close",             // an entry, in it still
          "openat d/s", "close", "opendir d/s",         // down
          "lstat d/s/f", "openat d/s", "close", "unlink d/s/f", "closedir d/s", "rmdir d/s",
          "closedir d", "rmdir d"}},
    };
    for (auto const& row : rows) {
        recorder recorded;
        row.action();
        EXPECT_EQ(recorded.made, row.expected);
    }
}

TEST_F(SystemCalls, OfACopyGrowWithItsEntries) {
    auto const merged = [](int depth) {
        std::u16string chain = u"chain" + std::u16string(static_cast<unsigned>(depth) * 2, u'/');
        for (std::size_t i = 6; i < chain.size(); i += 2) chain[i] = u'd';
        create_directories(chain);
        constexpr auto options = copy_option::recursive | copy_option::skip_existing;
        copy(u"chain", u"copy", options);
        recorder recorded;
        copy(u"chain", u"copy", options);
        return recorded.all.size();
    };
    std::size_t const once = merged(40);
    EXPECT_LT(merged(80), once * 21 / 10);
}

TEST_F(SystemCalls, ThatFailAreReportedByTheirRules) {
    std::u16string const overlong(1024, u'n');
    struct {
        std::string call;
        int error;
        std::function<void()> action;
        std::string outcome;
    } const rows[] = {
        {"mkdir n", 0, [] { create_directory(u"n"), create_directories(u"m"); }, "ok"},
        {"rename f t", 0, [] { rename(u"f", u"t"); }, "ok"},
        {"rename d/s t", EACCES, [] { rename(u"d/s", u"t"); }, "AccessDenied [t]"},
        {"lstat f", EIO, [] { copy(u"f", u"g"); }, "SystemError EIO"},
        {"", 0, [] { read_symlink(u"/negative"); }, "SystemError " + std::to_string(ENAMETOOLONG)},
        // A source that is too long is at fault, whatever the error says.
        {"stat " + utf8(overlong), ENOENT, [&] { rename(overlong, u"t"); },
         "FileNameTooLarge [" + utf8(overlong) + "]"},
    };
    for (auto const& row : rows) {
        recorder recorded;
        recorded.failing = row.call, recorded.nth = 1, recorded.error = row.error;
        TELLS(row.action(), row.outcome) << row.call;
    }
}

}  // namespace
}  // namespace ko::filesystem

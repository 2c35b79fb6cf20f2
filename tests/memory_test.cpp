#include <cerrno>
#include <cstddef>
#include <functional>
#include <iterator>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include <ko/filesystem.hpp>
#include <ko/filesystem/detail/error_mapping.hpp>

#include "support/allocations.hpp"
#include "support/files.hpp"
#include "support/outcome.hpp"

namespace ko::filesystem {
namespace {

using namespace detail;

std::u16string const long_text = u"/a/text/longer/than/the/buffer/of/a/string.txt";
std::u16string const long_name = u"a-name-longer-than-the-buffer-of-a-string";

struct Memory : test_support::scratch_test {};

TEST_F(Memory, IsTakenForResultsOnly) {
    std::u16string const file = scratch.file(long_name), many = scratch.directory(u"many");
    upath const path(file), missing(scratch / u"missing");
    for (char16_t name = 0x4E00; name < 0x4E00 + 1000; ++name)
        scratch.file(u"many/" + std::u16string(1, name));
    auto const count = [](auto action) {
        test_support::allocation_watch const watch;
        return action(), watch.allocations;
    };
    EXPECT_EQ(count([&] {
                  exists(path), status(file), symlink_status(missing);
                  EXPECT_FALSE(is_directory(file));
                  last_write_time(path, last_write_time(file)), access(file, access_read);
                  create_hard_link(path, missing), remove_if_exists(missing);
              }),
              0);
    EXPECT_EQ(count([&] { make_native_form(long_text, true); }), 1);
    auto const list = [&] { EXPECT_EQ(std::distance(directory_iterator(many), {}), 1000); };
    EXPECT_LT(count(list) + count([&] { remove_all(many); }), 30);
}

TEST_F(Memory, ThatRunsOutLeavesArgumentsAsTheyWere) {
    test_support::environment_guard const home("HOME", "/a/home/that/is/longer/than/the/buffer");
    std::u16string const first_element = u"e";
    std::u16string p = long_name, element = first_element;
    std::size_t position = 0;
    std::u16string const addition = std::u16string(u"x//").append(long_name);
    std::u16string const walked = std::u16string(u"e/").append(long_name);
    struct {
        int least;
        std::function<void()> action;
    } const rows[] = {
        {1, [&] { concatenate_pathname(p, addition, false); }},
        {2, [&] { concatenate_pathname(p, u"~", true); }},  // and is then refused
        {1, [&] { replace_extension(p, long_name); }},
        {1, [&] { move_down(walked, 0, position, element); }},
        {2, [&] { make_native_form(u"~//x", true); }},
        {1, [&] { to_filesystem(std::u16string(1500, u'\u00E9')); }},
        {1, [&] { from_filesystem(std::string(1500, '\xE9')); }},
    };
    for (auto const& row : rows) {
        p = std::u16string(long_name), element = first_element, position = 0;
        int failing = 1;
        auto const attempt = [&] {
            test_support::allocation_watch const watch(failing);
            row.action();
        };
        for (; test_support::outcome("@", attempt) == "std: std::bad_alloc"; ++failing) {
            EXPECT_EQ(p, long_name);
            EXPECT_EQ(element, first_element);
            EXPECT_EQ(position, 0u);
            EXPECT_EQ(to_filesystem(u"\u00E9"), "\xC3\xA9");
            EXPECT_EQ(from_filesystem("\xC3\xA9"), u"\u00E9");
        }
        EXPECT_GT(failing, row.least) << "row " << &row - rows;
    }
}

TEST(MemoryDeathTest, ThatRunsOutInADescriptionEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    InvalidArgument const error("a message that needs memory", u"", {});
    auto const describe = [&] {
        test_support::allocation_watch const first_one_fails(1);
        static_cast<void>(error.what());
    };
    EXPECT_DEATH(describe(), "bad_alloc");
}

TEST_F(Memory, ThatRunsOutDoesNotHideTheFailureToReport) {
    auto const report = [] {
        std::string const path1 = "a path that needs memory \x7F\x80\xFF", path2 = "g";
        test_support::allocation_watch const first_one_fails(1);
        throw_errno_exception(EIO, path1, path2);
    };
    EXPECT_EQ(test_support::outcome("@", report),
              "SystemError [a path that needs memory \x7F\uFF80\uFFFF] [g] EIO");
}

}  // namespace
}  // namespace ko::filesystem

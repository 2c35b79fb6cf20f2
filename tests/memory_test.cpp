#include <cerrno>
#include <cstddef>
#include <functional>
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
using testing::count_allocations;
using testing::fail_each_allocation;

std::u16string const long_text = u"/a/text/longer/than/the/buffer/of/a/string.txt";
std::u16string const long_name = u"a-name-longer-than-the-buffer.of-a-string";

TEST(Memory, IsTakenForResultsOnly) {
    testing::scratch_dir const scratch;
    std::u16string const file = scratch.file(long_name), missing = scratch / u"missing";
    std::u16string const untidy = file + u"//", untidy_text = long_text + u"//x/";
    std::u16string const han(30, u'\u6F22');
    std::string const han8 = to_filesystem(han), ascii8 = to_filesystem(long_text);
    static_cast<void>(from_filesystem(han8));  // opens the converter
    upath const path(file);
    testing::environment_guard const home("HOME", "/home/someone");
    std::u16string const directory = scratch / u"a-directory-with-a-long-name";
    std::u16string const renamed = scratch / u"another-name", link = scratch / u"link";
    std::u16string const below_home = u"~/a/name/in/the/home/directory";
    std::u16string long_copy = long_text;
    struct {
        int allocations;
        std::function<void()> action;
    } const rows[] = {
        {1, [&] { to_filesystem(long_text); }},
        {1, [&] { from_filesystem(ascii8); }},
        {1, [&] { to_filesystem(han); }},
        {1, [&] { from_filesystem(han8); }},
        {1, [&] { make_native_form(long_text, true); }},
        {1, [&] { make_native_form(untidy_text, true); }},
        {1, [&] { make_native_form(below_home, true); }},
        {1, [&] { extract_parent_path(long_text); }},
        {0, [&] { extract_extension(long_text); }},
        {1, [&] { static_cast<void>(path / long_name); }},
        {0, [&] { replace_extension(long_copy, u"md"); }},
        {1, [&] { absolute(long_name, long_text); }},
        {0,
         [&] { exists(path), status(path), symlink_status(missing), access(path, access_read); }},
        {0, [&] { is_directory(path), file_size(path), hard_link_count(file); }},
        {0, [&] { last_write_time(path, last_write_time(file)), resize_file(file, 0); }},
        {0, [&] { create_hard_link(file, link), remove_if_exists(link); }},
        {1, [&] { ensure_directories(directory), remove_if_exists(directory); }},
        {0, [&] { status_express_light(file), exists(file), status(file); }},
        {1, [&] { exists(untidy); }},
        {1, [&] { status(han); }},
        {0, [&] { create_directory(directory), remove_directory(directory); }},
        {0, [&] { rename(file, renamed), rename(renamed, file); }},
        {2, [&] { create_symlink(file, link), read_symlink(link), remove_symlink(link); }},
        {1, [&] { create_directories(directory), remove(directory); }},
        {1, [&] { canonical(file); }},
        {1, [&] { weakly_canonical(file); }},
    };
    int number = 0;
    for (auto const& row : rows) {
        SCOPED_TRACE(number++);
        EXPECT_EQ(count_allocations(row.action), row.allocations);
    }
}

TEST(Memory, ThatRunsOutLeavesArgumentsAsTheyWere) {
    testing::environment_guard const home("HOME", "/a/home/that/is/longer/than/the/buffer");
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
        {2, [&] { concatenate_pathname(p, u"~", true); }},
        {1, [&] { replace_extension(p, long_name); }},
        {1, [&] { move_down(walked, 0, position, element); }},
        {2, [&] { make_native_form(u"~//x", true); }},
        {1, [&] { to_filesystem(std::u16string(1500, u'\u00E9')); }},
        {1, [&] { from_filesystem(std::string(1500, '\xE9')); }},
    };
    int number = 0;
    for (auto const& row : rows) {
        SCOPED_TRACE(number++);
        p = std::u16string(long_name), element = first_element, position = 0;
        auto const check = [&] {
            EXPECT_EQ(p, long_name);
            EXPECT_EQ(element, first_element);
            EXPECT_EQ(position, 0u);
            EXPECT_EQ(to_filesystem(u"\u00E9"), "\xC3\xA9");
            EXPECT_EQ(from_filesystem("\xC3\xA9"), u"\u00E9");
        };
        try {
            EXPECT_GE(fail_each_allocation(row.action, check), row.least);
        } catch (InvalidArgument const& error) {
            EXPECT_EQ(error.message(), "Absolute path not permitted");
        }
    }
}

TEST(MemoryDeathTest, ThatRunsOutInADescriptionEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    InvalidArgument const error("a message that needs memory", u"", {});
    auto const describe = [&] {
        testing::allocation_watch const first_one_fails(1);
        static_cast<void>(error.what());
    };
    EXPECT_DEATH(describe(), "bad_alloc");
}

TEST(Memory, ThatRunsOutDoesNotHideTheFailureToReport) {
    auto const report = [] {
        std::string const path1 = "a path that needs memory \x7F\x80\xFF", path2 = "g";
        testing::allocation_watch const first_one_fails(1);
        throw_errno_exception(EIO, path1, path2);
    };
    EXPECT_EQ(testing::outcome("@", report),
              "SystemError [a path that needs memory \x7F\uFF80\uFFFF] [g] EIO");
}

}  // namespace
}  // namespace ko::filesystem

#include <ko/filesystem/detail/error_mapping.hpp>

#include "support/allocations.hpp"
#include "support/outcome.hpp"

namespace ko::filesystem::test_support::memory_test {

using namespace detail;

std::u16string const long_text = u"/a/text/longer/than/the/buffer/of/a/string.txt";
std::u16string const long_name = u"a-name-longer-than-the-buffer-of-a-string";

struct Memory : scratch_test {};

TEST_F(Memory, IsTakenForResultsOnly) {
    scratch.make({"many/"});
    std::u16string const file = scratch.file(long_name), many = scratch / u"many";
    upath const path(file), missing(scratch / u"missing");
    for (char16_t name = 0x4E00; name < 0x4E00 + 1000; ++name)
        scratch.file(u"many/" + std::u16string(1, name));
    auto const count = [](auto action) {
        allocation_watch const watch;
        return action(), watch.allocations;
    };
    auto const ask_and_change = [&] {
        exists(path), status(file), symlink_status(missing);
        EXPECT_FALSE(is_directory(file));
        last_write_time(path, last_write_time(file)), access(file, access_read);
        create_hard_link(path, missing), remove_if_exists(missing);
    };
    EXPECT_EQ(count(ask_and_change), 0);
    EXPECT_EQ(count([&] { make_native_form(long_text, true); }), 1);
    auto const list = [&] { EXPECT_EQ(std::distance(directory_iterator(many), {}), 1000); };
    EXPECT_LT(count(list) + count([&] { remove_all(many); }), 30);
}

TEST_F(Memory, ThatRunsOutLeavesArgumentsAsTheyWere) {
    environment_guard const home("HOME", "/a/home/that/is/longer/than/the/buffer");
    std::u16string p, element;
    std::size_t position = 0;
    std::u16string const addition = u"x//" + long_name, walked = u"e/" + long_name;
    auto const check = [&](int least, auto action, int line = __builtin_LINE()) {
        p = std::u16string(long_name), element = u"e", position = 0;
        int failing = 1;
        auto const attempt = [&] {
            allocation_watch const watch(failing);
            action();
        };
        for (; outcome("@", attempt) == "std: std::bad_alloc"; ++failing) {
            EXPECT_EQ(
                joined(p, element, position, to_filesystem(u"\u00E9"), from_filesystem("\u00E9")),
                joined(long_name, u"e", 0, "\u00E9", u"\u00E9"));
        }
        EXPECT_GT(failing, least) << "row in line " << line;
    };
    check(1, [&] { concatenate_pathname(p, addition, false); });
    check(2, [&] { concatenate_pathname(p, u"~", true); });  // and is then refused
    check(1, [&] { replace_extension(p, long_name); });
    check(1, [&] { move_down(walked, 0, position, element); });
    check(2, [&] { make_native_form(u"~//x", true); });
    check(1, [&] { to_filesystem(std::u16string(1500, u'\u00E9')); });
    check(1, [&] { from_filesystem(std::string(1500, '\xE9')); });
}

// Lack of memory in a description ends the process.
static_assert(noexcept(std::declval<InvalidArgument const&>().what()));

TEST_F(Memory, ThatRunsOutDoesNotHideTheFailureToReport) {
    auto const report = [] {
        std::string const path1 = "a path that needs memory \x7F\x80\xFF", path2 = "g";
        allocation_watch const first_one_fails(1);
        throw_errno_exception(EIO, path1, path2);
    };
    EXPECT_EQ(outcome("@", report),
              "SystemError [a path that needs memory \x7F\uFF80\uFFFF] [g] EIO");
}

}  // namespace ko::filesystem::test_support::memory_test

// Listings of real directories.

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <iterator>
#include <set>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>

#include <ko/filesystem.hpp>

#include "support/files.hpp"
#include "support/outcome.hpp"

namespace ko::filesystem {
namespace {

using testing::scratch_dir;
using recursive = recursive_directory_iterator;
using option = directory_option;
using lines = std::multiset<std::string>;

/// "path depth type" with "d" for what leads to a directory and "f" for what leads to a file; "?" and the
/// name for a path that isn't UTF-8.
template <class Iterator>
lines told(Iterator it) {
    lines result;
    for (; it != Iterator(); ++it) {
        std::string line = it->has_path() ? it->path().string() : '?' + it->native_name();
        if constexpr (std::is_same_v<Iterator, recursive>) line += ' ' + std::to_string(it.depth());
        line += ' ' + std::to_string(it->type() >> 12);
        result.insert(line + (it->is_directory() ? "d" : it->is_regular_file() ? "f" : ""));
    }
    return result;
}

/// The same by std::filesystem, which has the types in an order of its own.
lines told_by_std(char const* directory, std::filesystem::directory_options options) {
    lines result;
    std::filesystem::recursive_directory_iterator it(directory, options);
    for (; it != end(it); ++it) {
        std::string const path = it->path();
        bool const has_path = path.find('\xFF') == path.npos;
        std::string line = has_path ? path : '?' + it->path().filename().string();
        struct stat found {};
        scratch_dir::must(::lstat(path.c_str(), &found) == 0);
        line += ' ' + std::to_string(it.depth()) + ' ' + std::to_string(found.st_mode >> 12);
        std::error_code loops;
        result.insert(line + (it->is_directory(loops)      ? "d"
                              : it->is_regular_file(loops) ? "f"
                                                           : ""));
    }
    return result;
}

class Directory : public testing::scratch_test {
protected:
    /// Names of many kinds in `d`, two of them not UTF-8.
    Directory() {
        scratch.directory(u"d");
        for (char const* const name :
             {"d/s", "d/s/deeper", "d/\xFF", "d/\xFF/\xC3\xA9", "d/~root", "d/\xE6\xBC\xA2"})
            scratch_dir::must(::mkdir(name, 0755) == 0);
        for (char const* const name : {"d/s/f", "d/s/deeper/f", "d/\xFF/f", "d/~",
                                       "d/\xE6\xBC\xA2/~", "d/a\xFFz", "d/\n\x7F", "d/..."})
            scratch.file(u"x"), scratch_dir::must(::rename("x", name) == 0);
        for (auto const& [target, name] : {std::pair("s", "d/to_s"),
                                           {"...", "d/to_file"},
                                           {"x", "d/dangling"},
                                           {".../x", "d/below"}})
            scratch_dir::must(::symlink(target, name) == 0);
        scratch_dir::must(::mkfifo("d/fifo", 0600) == 0);
    }
};

TEST_F(Directory, ListsWhatStdLists) {
    using options = std::filesystem::directory_options;
    EXPECT_EQ(told(recursive(u"d")), told_by_std("d", options::none));
    EXPECT_EQ(told(recursive(upath(u"d"), option::follow_directory_symlinks)),
              told_by_std("d", options::follow_directory_symlink));
    EXPECT_EQ(told(directory_iterator(u"d//s/")), (lines{"d/s/deeper 4d", "d/s/f 8f"}));
    EXPECT_EQ(told(directory_iterator(upath(u"d/~root"))), lines());
    EXPECT_EQ(directory_iterator(u"/")->path().native().find(u"//"), std::u16string::npos);
}

/// By the same way through the tree: what is passed by and what is left goes by the names.
template <class Iterator, class NameOf>
std::string way(Iterator it, NameOf name_of) {
    std::string result;
    while (it != Iterator()) {
        std::string const name = name_of(*it);
        result += name + (it.recursion_pending() ? '+' : '-') + std::to_string(it.depth()) + '\n';
        if (name == "s") it.disable_recursion_pending();
        if (name == "f" && it.depth() != 0)
            it.pop();
        else
            ++it;
    }
    return result;
}

TEST_F(Directory, PassesByAndLeavesAsStdDoes) {
    for (char16_t const* const top : {u"d", u"d/s"})
        EXPECT_EQ(way(recursive(top), [](auto const& entry) { return entry.native_name(); }),
                  way(std::filesystem::recursive_directory_iterator(top),
                      [](auto const& entry) { return entry.path().filename().string(); }));
}

TEST_F(Directory, IteratorsShareTheirListing) {
    directory_iterator it(u"d/s"), other = it;
    std::string const first = it->native_name();
    EXPECT_EQ((*it++).native_name(), first);
    EXPECT_EQ(other->native_name(), it->native_name());
    EXPECT_TRUE(other == it && it != directory_iterator(u"d/s"));
    directory_entry const kept = *it;
    EXPECT_EQ(++ ++it, other);
    EXPECT_EQ(other, directory_iterator());
    EXPECT_EQ(kept.path().parent_path(), upath(u"d/s"));
    EXPECT_FALSE(kept.path().expand_tilde());
}

TEST_F(Directory, EntriesAreAskedByTheirBytes) {
    for (directory_entry const& entry : directory_iterator(u"d")) {
        if (entry.native_name() != "a\xFFz") continue;
        TELLS(entry.path(), "InvalidArgument \"Invalid UTF-8\" [d/a\uFFFDz]");
        EXPECT_EQ(entry.status().type, file_status::regular_file);
        EXPECT_EQ(entry.last_write_time(), entry.symlink_status().last_write_time);
        TELLS(entry.file_size() == 0, "yes");
        scratch_dir::must(::unlink("d/a\xFFz") == 0);
        TELLS(entry.file_size() == 0, "PathNotFound [d/a\uFFFDz]");
        EXPECT_EQ(entry.status().type, file_status::file_not_found);
    }
    scratch.link(u"d/s/loop", "loop");
    std::set<std::string> outcomes;
    for (directory_entry const& entry : directory_iterator(u"d/s")) {
        outcomes.insert(testing::outcome(scratch.path8(), [&] { return entry.is_regular_file(); }));
        outcomes.insert(testing::outcome(scratch.path8(), [&] { return entry.file_size() == 0; }));
    }
    EXPECT_EQ(outcomes, (std::set<std::string>{"no", "yes", "FileIsDirectory [d/s/deeper]",
                                               "SystemError [d/s/loop] ELOOP"}));
}

TEST_F(Directory, ThatCannotBeListed) {
    auto const has_entries = [](std::u16string const& p, option options = option::none) {
        return recursive(p, options) != recursive();
    };
    TELLS(has_entries(u""), "InvalidArgument \"Empty Path not permitted\"");
    TELLS(has_entries(std::u16string(u"d\0x", 3)), "InvalidArgument \"\" [d\\0x]");
    TELLS(has_entries(u"missing"), "PathNotFound [missing]");
    TELLS(has_entries(u"d/.../x", option::skip_permission_denied), "NotDirectoryError [d/.../x]");
    scratch.directory(u"d/s/closed", 0);
    testing::as_unprivileged_child([&] {
        TELLS(has_entries(u"d/s/closed"), "AccessDenied [d/s/closed]");
        TELLS(has_entries(u"d/s/closed", option::skip_permission_denied), "no");
        recursive it(u"d");
        TELLS(std::distance(it, recursive()) == 0, "AccessDenied [d/s/closed]");
        EXPECT_EQ(it, recursive());
        EXPECT_EQ(told(recursive(u"d/s", option::skip_permission_denied)).size(), 4u);
    });
}

TEST_F(Directory, ThatLinksLeadBackToIsNotEntered) {
    scratch.link(u"d/s/deeper/up", "..");
    scratch.link(u"d/s/deeper/self", ".");
    scratch.link(u"d/s/again", "deeper");  // is a sibling, and closed by then
    EXPECT_EQ(told(recursive(u"d/s", option::follow_directory_symlinks)),
              (lines{"d/s/f 0 8f", "d/s/deeper 0 4d", "d/s/deeper/f 1 8f", "d/s/deeper/up 1 10d",
                     "d/s/deeper/self 1 10d", "d/s/again 0 10d", "d/s/again/f 1 8f",
                     "d/s/again/up 1 10d", "d/s/again/self 1 10d"}));
}

TEST_F(Directory, ThatIsGoneBeforeItIsEnteredCountsAsEmpty) {
    auto const nothing = [] {};
    auto const file = [this] { scratch.file(u"d/s/deeper"); };
    auto const link = [this] { scratch.link(u"d/s/deeper", "../\u6F22"); };
    for (std::function<void()> const& replace : {std::function<void()>(nothing), {file}, {link}}) {
        lines names;
        for (directory_entry const& entry : recursive(u"d/s")) {
            names.insert(entry.native_name());
            if (entry.native_name() != "deeper") continue;
            scratch_dir::must(::rename("d/s/deeper", "moved") == 0);
            replace();
        }
        EXPECT_EQ(names, (lines{"deeper", "f"}));
        std::filesystem::remove("d/s/deeper");
        scratch_dir::must(::rename("moved", "d/s/deeper") == 0);
    }
}

}  // namespace
}  // namespace ko::filesystem

// Listings of real directories.

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <set>
#include <string>
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

/// "?" and the name where there is no path.
std::string path_of(directory_entry const& entry) {
    return entry.has_path() ? entry.path().string() : '?' + entry.native_name();
}
std::string path_of(std::filesystem::directory_entry const& entry) {
    bool const has_path = entry.path().native().find('\xFF') == std::string::npos;
    return has_path ? entry.path().string() : '?' + entry.path().filename().string();
}

/// "path depth", and "d", "f" and "l" for what the entry is; when `leaves` is set, without what `s` holds
/// and what follows a file that is not at the top.
template <class Iterator>
lines walked(Iterator it, bool leaves = false) {
    lines result;
    while (it != Iterator()) {
        std::string const kinds = std::string(it->is_directory() ? "d" : "") +
                                  (it->is_regular_file() ? "f" : "") +
                                  (it->is_symlink() ? "l" : "");
        result.insert(path_of(*it) + ' ' + std::to_string(it.depth()) + kinds);
        if (leaves && it->path().filename().native().size() == 1) it.disable_recursion_pending();
        if (leaves && kinds == "f" && it.depth() != 0)
            it.pop();
        else
            ++it;
    }
    return result;
}

class Directory : public testing::scratch_test {
protected:
    /// Names of many kinds in `d`, two of them not UTF-8.
    Directory() {
        for (char const* const name : {"d", "d/s", "d/s/t", "d/\xFF", "d/\xFF/\xC3\xA9", "d/~root"})
            scratch_dir::must(::mkdir(name, 0755) == 0);
        for (char const* const name :
             {"d/s/f", "d/s/t/f", "d/\xFF/f", "d/a\xFFz", "d/\n\x7F", "d/..."})
            scratch_dir::must(::mknod(name, S_IFREG | 0644, 0) == 0);
        for (auto const& [target, name] :
             {std::pair("s", "d/l"), {"x", "d/dangling"}, {".../x", "d/x"}})
            scratch_dir::must(::symlink(target, name) == 0);
    }
};

TEST_F(Directory, ListsWhatStdLists) {
    using std_recursive = std::filesystem::recursive_directory_iterator;
    EXPECT_EQ(walked(recursive(u"d")), walked(std_recursive("d")));
    EXPECT_EQ(walked(recursive(upath(u"d//s/")), true), walked(std_recursive("d/s"), true));
    EXPECT_EQ(
        walked(recursive(u"d", option::follow_directory_symlinks)),
        walked(std_recursive("d", std::filesystem::directory_options::follow_directory_symlink)));
    directory_iterator it(upath(u"/")), other = it;
    upath const first = (*it++).path();
    EXPECT_TRUE(first.parent_path() == upath(u"/") && first != other->path() &&
                !first.expand_tilde());
}

TEST_F(Directory, EntriesAreAskedByTheirBytes) {
    lines outcomes;
    for (directory_entry const& entry : directory_iterator(u"d")) {
        auto const told = [&](auto ask) {
            outcomes.insert(testing::outcome(scratch.path8(), ask));
        };
        if (entry.has_path()) continue;
        told([&] { return entry.path(); });
        told([&] { return entry.status().type == entry.type(); });
        told([&] { return entry.file_size() != 0; });
    }
    EXPECT_EQ(outcomes, (lines{"InvalidArgument \"Invalid UTF-8\" [d/\uFFFD]", "yes",
                               "FileIsDirectory [d/\uFFFD]",
                               "InvalidArgument \"Invalid UTF-8\" [d/a\uFFFDz]", "yes", "no"}));
}

TEST_F(Directory, ThatCannotBeListed) {
    auto const count = [](std::u16string const& p, option options = option::none) {
        return std::to_string(std::distance(recursive(p, options), recursive()));
    };
    TELLS(count(u""), "InvalidArgument \"Empty Path not permitted\"");
    TELLS(count(std::u16string(u"d\0x", 3)), "InvalidArgument \"\" [d\\0x]");
    scratch.directory(u"d/s/closed", 0);
    testing::as_unprivileged_child([&] {
        TELLS(count(u"d/s"), "AccessDenied [d/s/closed]");
        TELLS(count(u"d/s/closed", option::skip_permission_denied), "0");
        TELLS(count(u"d/s", option::skip_permission_denied), "4");
    });
}

TEST_F(Directory, IsNotEnteredByALinkBackNorInPlaceOfADirectory) {
    scratch.link(u"d/s/t/up", "..");
    scratch.link(u"d/s/u", "t");  // is a sibling, and so not open by then
    EXPECT_EQ(walked(recursive(u"d/s", option::follow_directory_symlinks)),
              (lines{"d/s/f 0f", "d/s/t 0d", "d/s/t/f 1f", "d/s/t/up 1dl", "d/s/u 0dl",
                     "d/s/u/f 1f", "d/s/u/up 1dl"}));
    lines names;
    for (directory_entry const& entry : recursive(u"d/s")) {
        names.insert(entry.native_name());
        if (entry.native_name() != "t") continue;
        std::filesystem::remove_all("d/s/t");
        scratch.link(u"d/s/t", "..");
    }
    EXPECT_EQ(names, (lines{"f", "t", "u"}));
}

}  // namespace
}  // namespace ko::filesystem

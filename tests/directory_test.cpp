// Listings of real directories.

#include "support/outcome.hpp"

namespace ko::filesystem::test_support::directory_test {

using recursive = recursive_directory_iterator;
using option = directory_option;
using lines = std::multiset<std::string>;

/// The path, or "?" and the name if there is none.
std::string path_of(directory_entry const& entry) {
    return entry.has_path() ? entry.path().string() : '?' + entry.native_name();
}
std::string path_of(std::filesystem::directory_entry const& entry) {
    bool const has_path = entry.path().native().find('\xFF') == std::string::npos;
    return has_path ? entry.path().string() : '?' + entry.path().filename().string();
}

/// "path depth", and "d", "f" and "l" for the types of the entry. If `leaves`, doesn't enter
/// directories with one-letter names, and leaves a directory below the top after its first file.
template <class Iterator>
lines walked(Iterator it, bool leaves = false) {
    lines result;
    while (it != Iterator()) {
        std::string const depth = ' ' + std::to_string(it.depth());
        bool const is_file = it->is_regular_file();
        result.insert(path_of(*it) + depth + (it->is_directory() ? "d" : "") +
                      (is_file ? "f" : "") + (it->is_symlink() ? "l" : ""));
        if (leaves && it->path().filename().native().size() == 1) it.disable_recursion_pending();
        bool const leaves_now = leaves && is_file && it.depth() != 0;
        leaves_now ? it.pop() : void(++it);
    }
    return result;
}

class Directory : public table_test {
protected:
    /// Names of many kinds in `d`, two of them not UTF-8.
    Directory() {
        scratch.make({"d/", "d/s/", "d/s/t/", "d/\xFF/", "d/\xFF/\xC3\xA9/", "d/~root/", "d/s/f",
                      "d/s/t/f", "d/\xFF/f", "d/a\xFFz", "d/\n\x7F", "d/...", "d/l -> s",
                      "d/dangling -> x", "d/x -> .../x"});
    }
};

TEST_F(Directory, ListsWhatStdLists) {
    using std_recursive = std::filesystem::recursive_directory_iterator;
    EXPECT_EQ(walked(recursive(u"d")), walked(std_recursive("d")));
    for (auto const& s : {recursive(u"d//s/"), recursive(upath(u"d//s/"))})
        EXPECT_EQ(walked(s, true), walked(std_recursive("d/s"), true));
    EXPECT_EQ(
        walked(recursive(u"d", option::follow_directory_symlinks)),
        walked(std_recursive("d", std::filesystem::directory_options::follow_directory_symlink)));
    directory_iterator it(upath(u"/")), other = it;
    upath const first = (*it++).path();
    EXPECT_EQ(joined(first.parent_path(), first != other->path(), first.expand_tilde()),
              "/|yes|no|");
}

TEST_F(Directory, AsksTheSystemByTheBytesOfAName) {
    for (auto const options : {option::none, option::read_status}) {
        lines outcomes;
        auto const ask = [&](auto what) { outcomes.insert(outcome(scratch.path8(), what)); };
        for (directory_entry const& entry : directory_iterator(u"d//", options)) {
            if (entry.has_path()) continue;
            ask([&] { return entry.path(); });
            ask([&] { return entry.status().type == entry.type(); });
            ask([&] { return entry.file_size(); });
            EXPECT_EQ(entry.native_path(), "d/" + entry.native_name());
        }
        EXPECT_EQ(outcomes, (lines{"InvalidArgument \"Invalid UTF-8\" [d/\uFFFD]", "yes",
                                   "FileIsDirectory [d/\uFFFD]",
                                   "InvalidArgument \"Invalid UTF-8\" [d/a\uFFFDz]", "yes", "0"}));
    }
}

TEST_F(Directory, EntriesAnswerTheSameHoweverTheyKnow) {
    auto const answers = [&](directory_entry const& entry) {
        std::string all = entry.native_path() + ' ' + entry.native_name();
        auto const add = [&](auto question) { all += ", " + outcome(scratch.path8(), question); };
        add([&] { return entry.path(); });
        add([&] { return entry.status().type; });
        add([&] { return entry.type() + entry.symlink_status().size + entry.is_regular_file(); });
        add([&] { return entry.file_size(); });
        add([&] { return entry.last_write_time().time_of_day().ticks(); });
        return all;
    };
    lines by_listing, by_status, by_path;
    for (directory_entry const& entry : recursive(u"d")) {
        by_listing.insert(answers(entry));
        by_path.insert(answers(entry.has_path() ? directory_entry(entry.path()) : entry));
    }
    for (directory_entry const& entry : recursive(u"d", option::read_status))
        by_status.insert(answers(entry));
    EXPECT_EQ(by_status, by_listing);
    EXPECT_EQ(by_path, by_listing);
    std::string const bad =
        "d/a\xFFz a\xFFz, InvalidArgument \"Invalid UTF-8\" [d/a\uFFFDz], 32768, 32769, 0, ";
    EXPECT_EQ(by_listing.lower_bound(bad)->substr(0, bad.size()), bad);
    auto const type = [](auto const& p) { return directory_entry(p).type(); };
    std::string const absent = std::to_string(file_status::file_not_found);
    expect(type, row(u"d//", "16384"), row(u"", absent), row(u"missing", absent),
           row(u"d/.../x", "NotDirectoryError [d/.../x]"),
           row(std::u16string(u"d\0x", 3), "InvalidArgument \"\" [d\\0x]"));
    EXPECT_EQ(directory_entry(u"/").native_name() + directory_entry().native_path(), "/");
}

TEST_F(Directory, ReportsOrSkipsWhatCannotBeListed) {
    auto const with = [](option options) {
        return [=](auto const& p) { return std::distance(recursive(p, options), {}); };
    };
    auto const first = [](auto const& p) { return directory_iterator(p)->native_name(); };
    expect(first, row(u"", no_path), row(u"d//s//t//", "f"),
           row(u"d//x//", "NotDirectoryError [d/x]"));
    expect(with(option::none), row(u"", no_path),
           row(std::u16string(u"d\0x", 3), "InvalidArgument \"\" [d\\0x]"));
    scratch.make({"open/", "d/names/", "d/names/f"});
    must(::mkdir("d/s/closed", 0) == 0 && ::chmod("open", 0777) == 0 &&
         ::chmod("d/names", 0444) == 0);
    as_unprivileged_child([&] {
        std::error_code code;  // of Boost's listing
        attempt(code, [] { copy(u"d/s/closed", u"open/n", copy_option::recursive); });
        EXPECT_EQ(code, std::errc::permission_denied);
        expect(with(option::none), row(u"d//s", "AccessDenied [d/s/closed]"));
        expect(with(option::skip_permission_denied), row(u"d//s", "4"), row(u"d/s/closed", "0"));
        int asked = 0;
        auto const twice = [&](FsysExceptionBase const& error) {
            return error.path() == u"d/s/closed" && ++asked != 3;
        };
        EXPECT_EQ(std::distance(recursive(u"d/s", option::none, twice), {}), 4);
        EXPECT_EQ(std::distance(directory_iterator(u"d/s/closed", option::none, twice), {}), 0);
        recursive refused(u"d/s", option::none, twice),
            failed(u"d/s", option::none, [](auto const&) -> bool { throw std::string(); });
        EXPECT_OUTCOME(void(std::advance(refused, 4)), "AccessDenied [d/s/closed]");
        EXPECT_THROW(std::advance(failed, 4), std::string);
        EXPECT_TRUE(refused == recursive() && failed == recursive() && asked == 3);
        // A directory that may be read and not searched has names without a status.
        for (directory_entry const& entry : directory_iterator(u"d/names", option::read_status)) {
            EXPECT_OUTCOME(entry.is_regular_file(), "yes");
            EXPECT_OUTCOME(entry.file_size(), "AccessDenied [d/names/f]");
        }
    });
}

TEST_F(Directory, FollowsNoLinkBackNorOneInPlaceOfADirectory) {
    scratch.make({"d/s/t/up -> ..", "d/s/u -> t"});  // u: a sibling, so not open at that time
    EXPECT_EQ(walked(recursive(u"d/s", option::follow_directory_symlinks)),
              (lines{"d/s/f 0f", "d/s/t 0d", "d/s/t/f 1f", "d/s/t/up 1dl", "d/s/u 0dl",
                     "d/s/u/f 1f", "d/s/u/up 1dl"}));
    lines names;
    for (directory_entry const& entry : recursive(u"d/s")) {
        names.insert(entry.native_name());
        if (entry.native_name() != "t") continue;
        std::filesystem::remove_all("d/s/t");
        scratch.make({"d/s/t -> .."});
    }
    EXPECT_EQ(names, (lines{"f", "t", "u"}));
}

}  // namespace ko::filesystem::test_support::directory_test

#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include <gtest/gtest.h>

#include <ko/filesystem.hpp>

#include "support/files.hpp"
#include "support/outcome.hpp"

namespace ko::filesystem {
namespace {

using testing::outcome;
using testing::scratch_dir;
using testing::utf8;

bool is_there(std::u16string const& path) {
    struct stat found {};
    return ::lstat(utf8(path).c_str(), &found) == 0;
}

// What each removal does to each kind of entry; "ok" says that it is gone.
TEST(Remove, DoesByTheKindOfTheEntry) {
    char const* const operations[] = {"remove",     "remove_file", "remove_directory",
                                      "remove_all", "as file",     "as directory"};
    struct {
        std::u16string name;
        std::string outcomes[6];
    } const rows[] = {
        {u"file",
         {"ok", "ok", "NotDirectoryError [@/file]", "ok", "ok", "NotDirectoryError [@/file]"}},
        {u"empty",
         {"ok", "FileIsDirectory [@/empty]", "ok", "ok", "FileIsDirectory [@/empty]", "ok"}},
        {u"full",
         {"DirectoryNotEmpty [@/full]", "FileIsDirectory [@/full]", "DirectoryNotEmpty [@/full]",
          "ok", "FileIsDirectory [@/full]", "DirectoryNotEmpty [@/full]"}},
        {u"link",
         {"ok", "ok", "NotDirectoryError [@/link]", "ok", "ok", "NotDirectoryError [@/link]"}},
        {u"dangling",
         {"ok", "ok", "NotDirectoryError [@/dangling]", "ok", "ok",
          "NotDirectoryError [@/dangling]"}},
        {u"fifo",
         {"ok", "ok", "NotDirectoryError [@/fifo]", "ok", "ok", "NotDirectoryError [@/fifo]"}},
        {u"missing",
         {"PathNotFound", "PathNotFound [@/missing]", "PathNotFound [@/missing]", "PathNotFound",
          "PathNotFound [@/missing]", "PathNotFound [@/missing]"}},
        {u"file/x",
         {"NotDirectoryError [@/file/x]", "NotDirectoryError [@/file/x]",
          "NotDirectoryError [@/file/x]", "NotDirectoryError [@/file/x]",
          "NotDirectoryError [@/file/x]", "NotDirectoryError [@/file/x]"}},
    };
    for (int operation = 0; operation != 6; ++operation)
        for (auto const& row : rows) {
            SCOPED_TRACE(std::string(operations[operation]) + ' ' + utf8(row.name));
            scratch_dir const scratch;
            scratch.file(u"file");
            scratch.directory(u"empty");
            scratch.directory(u"full");
            scratch.file(u"full/f");
            scratch.link(u"link", "full");
            scratch.link(u"dangling", "x");
            scratch_dir::must(::mkfifo(utf8(scratch / u"fifo").c_str(), 0600) == 0);
            auto const remove_path = [operation](auto const& p) {
                switch (operation) {
                    case 0: return remove(p);
                    case 1: return remove_file(p);
                    case 2: return remove_directory(p);
                    case 3: return remove_all(p);
                    case 4: return remove(p, file_status::regular_file);
                    default: return remove(p, file_status::directory_file);
                }
            };
            std::u16string const path = scratch / row.name;
            bool const was_there = is_there(path);
            EXPECT_EQ(outcome(scratch, [&] { remove_path(path); }), row.outcomes[operation]);
            bool const removed = row.outcomes[operation] == "ok";
            EXPECT_EQ(is_there(path), was_there && !removed);
            EXPECT_EQ(is_there(scratch / u"full/f"), row.name != u"full" || !removed);
            if (!removed) {
                EXPECT_EQ(outcome(scratch, [&] { remove_path(upath(path)); }),
                          row.outcomes[operation]);
            }
            EXPECT_EQ(outcome(scratch, [&] { remove_path(std::u16string()); }), "ok");
            EXPECT_EQ(outcome(scratch, [&] { remove_path(upath()); }), "ok");
            std::u16string const with_zero = scratch / u"full" + u'\0' + u"x";
            EXPECT_EQ(outcome(scratch, [&] { remove_path(with_zero); }),
                      "InvalidArgument \"\" [@/full\\0x]");
        }
    scratch_dir const scratch;
    remove_symlink(scratch.link(u"a", "x"));
    remove_symlink(upath(scratch.file(u"b")));
    EXPECT_FALSE(is_there(scratch / u"a") || is_there(scratch / u"b"));
}

TEST(RemoveAll, RemovesATreeAndNothingElse) {
    scratch_dir const scratch;
    std::string const kept = utf8(scratch.directory(u"kept"));
    scratch.file(u"kept/f");
    std::u16string dir = u"tree";
    for (int level = 0; level < 30; ++level, dir += u"/d\u00E9") {
        scratch.directory(dir);
        scratch.file(dir + u"/\u6F22");
        scratch.directory(dir + u"/.hidden");
        scratch.file(dir + u"/..more");
        scratch.link(dir + u"/out", kept);
        scratch.link(dir + u"/up", "..");
        scratch.link(dir + u"/dangling", "x");
    }
    std::string const bad_name = utf8(scratch / u"tree/") + "bad\xFF";
    scratch_dir::must(::mkdir(bad_name.c_str(), 0755) == 0);
    remove_all(scratch / u"tree//");
    EXPECT_FALSE(is_there(scratch / u"tree"));
    EXPECT_TRUE(is_there(scratch / u"kept/f"));
}

TEST(RemoveAll, StopsAtWhatItMayNotRemove) {
    scratch_dir const scratch;
    scratch.directory(u"d");
    scratch.directory(u"d/closed", 0555);
    scratch.file(u"d/closed/f");
    std::u16string const unreadable = scratch.directory(u"unreadable", 0);
    scratch_dir::must(::chmod(utf8(scratch / u"d").c_str(), 0777) == 0);
    testing::as_unprivileged_child([&] {
        EXPECT_EQ(outcome(scratch, [&] { remove_all(scratch / u"d"); }),
                  "AccessDenied [@/d/closed/f]");
        EXPECT_EQ(outcome(scratch, [&] { remove_all(unreadable); }), "AccessDenied [@/unreadable]");
    });
    EXPECT_TRUE(is_there(scratch / u"d/closed/f"));
}

}  // namespace
}  // namespace ko::filesystem

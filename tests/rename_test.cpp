#include <sys/stat.h>
#include <unistd.h>

#include <optional>
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

TEST(Rename, MovesWithinAFileSystem) {
    scratch_dir const scratch;
    scratch.file(u"a", "content");
    scratch.file(u"b");
    rename(scratch / u"//a", scratch / u"b");  // replaces
    EXPECT_EQ(scratch.content(u"b"), "content");
    rename(upath(scratch.directory(u"d")), upath(scratch / u"\u6F22"));
    EXPECT_EQ(status(scratch / u"\u6F22").type, file_status::directory_file);
}

TEST(Rename, BlamesThePathAtFault) {
    scratch_dir const scratch;
    scratch.file(u"file");
    scratch.directory(u"dir");
    scratch.directory(u"full");
    scratch.file(u"full/f");
    scratch.link(u"loop", "loop");
    std::u16string const long_name(300, u'n');
    struct {
        std::u16string from, to;
        std::string outcome;
    } const rows[] = {
        {u"missing", u"x", "PathNotFound [@/missing]"},
        {u"file/x", u"x", "NotDirectoryError [@/x]"},
        {u"file", u"no/x", "PathNotFound [@/no/x]"},
        {u"file", u"full", "FileIsDirectory [@/full]"},
        {u"dir", u"file", "NotDirectoryError [@/file]"},
        {u"dir", u"full", "DirectoryNotEmpty [@/full]"},
        {u"file", long_name, "FileNameTooLarge [@/" + utf8(long_name) + "]"},
        {long_name, u"x", "FileNameTooLarge [@/" + utf8(long_name) + "]"},
        {u"full", u"full/x", "InvalidArgument \"\" [@/full] [@/full/x]"},
        {u"loop/x", u"y", "SystemError [@/loop/x] ELOOP"},
        {u"f\0g", u"y", "PathNotFound [@/f]"},
    };
    for (auto const& row : rows)
        EXPECT_EQ(outcome(scratch, [&] { rename(scratch / row.from, scratch / row.to); }),
                  row.outcome)
            << utf8(row.from);
    for (auto const& [from, to] :
         {std::pair<std::u16string, std::u16string>(u"", u"x"), {u"x", u""}})
        EXPECT_EQ(outcome(scratch, [&, f = from, t = to] { rename(f, t); }),
                  "InvalidArgument \"Empty Path not permitted\"");
    std::u16string const zero = scratch / u"file" + u'\0';
    EXPECT_EQ(outcome(scratch, [&] { rename(zero, scratch / u"x"); }),
              "InvalidArgument \"\" [@/file\\0]");
}

TEST(Rename, BlamesByTheRightsToTheSourceDirectory) {
    scratch_dir const scratch;
    scratch.directory(u"open");
    scratch_dir::must(::chmod(utf8(scratch / u"open").c_str(), 0777) == 0);
    scratch.directory(u"closed");
    scratch.file(u"closed/f");
    scratch.file(u"open/f");
    scratch_dir::must(::chmod(utf8(scratch / u"closed").c_str(), 0555) == 0);
    testing::as_unprivileged_child([&] {
        EXPECT_EQ(outcome(scratch, [&] { rename(scratch / u"closed/f", scratch / u"open/g"); }),
                  "AccessDenied [@/closed/f]");
        scratch_dir::must(::chdir(utf8(scratch / u"open").c_str()) == 0);
        EXPECT_EQ(outcome(scratch, [&] { rename(scratch / u"open/f", scratch / u"closed/g"); }),
                  "AccessDenied [@/closed/g]");
        EXPECT_EQ(outcome(scratch, [&] { rename(u"f", scratch / u"closed/g"); }),
                  "InvalidArgument \"Empty Path not permitted\"");
    });
}

/// A directory on another file system than the usual scratch directories, where there is one.
std::optional<std::string> other_file_system() {
    struct stat here {
    }, there{};
    scratch_dir const scratch;
    scratch_dir::must(::stat(utf8(scratch / u"").c_str(), &here) == 0);
    if (::stat("/dev/shm", &there) != 0 || here.st_dev == there.st_dev ||
        ::access("/dev/shm", W_OK) != 0)
        return std::nullopt;
    return "/dev/shm";
}

class RenameAcrossDevices : public ::testing::Test {
protected:
    void SetUp() override {
        if (!parent_) GTEST_SKIP() << "no second file system: /dev/shm is missing or the same one";
    }

    /// A file written in 2001, and the time of the last write to a file.
    static void make_old(std::u16string const& path) {
        timespec const times[] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
        scratch_dir::must(::utimensat(AT_FDCWD, utf8(path).c_str(), times, 0) == 0);
    }
    static bool is_old(std::u16string const& path) {
        struct stat found {};
        scratch_dir::must(::stat(utf8(path).c_str(), &found) == 0);
        return found.st_mtime == 1'000'000'000;
    }

    std::optional<std::string> parent_ = other_file_system();
    scratch_dir here;
    scratch_dir there{parent_.value_or("/tmp")};
};

TEST_F(RenameAcrossDevices, MovesATree) {
    for (bool const keep_times : {false, true}) {
        here.directory(u"d");
        here.directory(u"d/\u00E9");
        make_old(here.file(u"d/\u00E9/f", "content"));
        here.link(u"d/link", "\u00E9");
        here.link(u"d/dangling", "x");
        make_old(here.directory(u"d/empty"));
        rename_options options;
        options.preserve_last_write_time = keep_times ? 1 : 0;
        rename(here / u"d", there / u"d", options);
        EXPECT_FALSE(exists(here / u"d"));
        EXPECT_EQ(there.content(u"d/\u00E9/f"), "content");
        EXPECT_EQ(is_old(there / u"d/\u00E9/f"), keep_times);
        EXPECT_FALSE(is_old(there / u"d/empty")) << "times of directories are not kept";
        EXPECT_EQ(read_symlink(there / u"d/link"), u"\u00E9");
        EXPECT_EQ(read_symlink(there / u"d/dangling"), u"x");
        remove_all(there / u"d");
    }
}

TEST_F(RenameAcrossDevices, MovesAFileOrALink) {
    for (bool const keep_times : {false, true}) {
        rename_options options;
        options.preserve_last_write_time = keep_times ? 1 : 0;
        make_old(here.file(u"f", "content"));
        rename(upath(here / u"f"), upath(there / u"f"), options);
        EXPECT_EQ(there.content(u"f"), "content");
        EXPECT_EQ(is_old(there / u"f"), keep_times);
        remove(there / u"f");
        here.link(u"l", "x");
        rename(here / u"l", there / u"l", options);
        EXPECT_EQ(read_symlink(there / u"l"), u"x");
        remove(there / u"l");
        EXPECT_FALSE(exists(here / u"f") || exists(here / u"l"));
    }
}

TEST_F(RenameAcrossDevices, LeavesTheSourceWhenTheCopyFails) {
    here.directory(u"d");
    here.file(u"d/f", "new");
    here.file(u"f", "new");
    there.file(u"f", "old");
    there.directory(u"d");
    there.file(u"d/f", "old");
    EXPECT_EQ(outcome(there, [&] { rename(here / u"f", there / u"f"); }), "FileExistsError [@/f]");
    EXPECT_EQ(outcome(there, [&] { rename(here / u"d", there / u"d"); }), "FileExistsError [@/d]");
    EXPECT_EQ(here.content(u"f") + here.content(u"d/f"), "newnew");
    EXPECT_EQ(there.content(u"f") + there.content(u"d/f"), "oldold");
}

// As the documentation warns: the real path of a link's target decides where its time goes.
TEST_F(RenameAcrossDevices, LosesTimesOfLinksThatLeaveTheTree) {
    here.directory(u"d");
    make_old(here.file(u"outside"));
    here.link(u"d/link", utf8(here / u"outside"));
    rename_options options;
    options.preserve_last_write_time = 1;
    EXPECT_EQ(outcome(here, [&] { rename(here / u"d", there / u"d", options); }).substr(0, 5),
              "std: ");
    EXPECT_TRUE(exists(here / u"d/link"));
}

}  // namespace
}  // namespace ko::filesystem

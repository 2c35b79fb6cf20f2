// What can't be met on a real file system, and which calls an operation makes, by a program that
// stands between the library and the system.

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ko/filesystem.hpp>

#include "support/files.hpp"
#include "support/interposer.hpp"
#include "support/outcome.hpp"

namespace ko::filesystem {
namespace {

using testing::call_recorder;
using testing::outcome;
using testing::scratch_dir;
using testing::utf8;
using calls = std::vector<std::string>;

std::string root_of(scratch_dir const& scratch) {
    std::string const root = utf8(scratch / u"");
    return root.substr(0, root.size() - 1);
}

std::ptrdiff_t open_descriptors() {
    std::filesystem::directory_iterator const descriptors("/proc/self/fd");
    return std::distance(begin(descriptors), end(descriptors));
}

void make_tree(scratch_dir const& scratch) {
    scratch.directory(u"d");
    scratch.directory(u"d/s");
    scratch.file(u"d/s/f");
}

calls const removal_of_tree = {
    "lstat d",     "openat d",   "close",       "opendir d",     // the directory is one
    "lstat d/s",   "openat d",   "close",                        // an entry, in it still
    "openat d/s",  "close",      "opendir d/s",                  // down
    "lstat d/s/f", "openat d/s", "close",       "unlink d/s/f",  //
    "closedir",    "rmdir d/s",  "closedir",    "rmdir d"};

TEST(SystemCalls, AreThoseOfTheOperationAndNoOthers) {
    scratch_dir const scratch;
    make_tree(scratch);
    scratch.file(u"f");
    scratch.link(u"l", "f");
    struct {
        std::function<void()> action;
        calls expected;
    } const rows[] = {
        {[&] { exists(scratch / u"f"); }, {"stat f"}},
        {[&] { status(scratch / u"f"); }, {"stat f"}},
        {[&] { symlink_status(scratch / u"f"); }, {"lstat f"}},
        {[&] { status_express_light(scratch / u"f"); }, {"stat f"}},
        {[&] {
             exists(u"");
             status(u"");
             remove(u"");
             remove_all(u"");
         },
         {}},
        {[&] { access(scratch / u"f", access_read); }, {"access f"}},
        {[&] { permissions(scratch / u"f", 0600); }, {"stat f", "chmod f"}},
        {[&] { permissions(scratch / u"f", 0600 | file_status::perms_symlink); },
         {"lstat f", "chmod f"}},
        {[&] { get_current_path(); }, {"getcwd"}},
        {[&] { change_current_path(scratch / u"d"); }, {"chdir d"}},
        {[&] { change_current_path(u""); }, {}},
        {[&] { create_directory(scratch / u"n"); }, {"mkdir n"}},
        {[&] { create_directories(scratch / u"x/y"); }, {"mkdir x", "mkdir x/y"}},
        {[&] { create_symlink(u"t", scratch / u"m"); }, {"stat m", "symlink t m"}},
        {[&] { read_symlink(scratch / u"m"); }, {"readlink m"}},
        {[&] { read_symlink(u"/endless/5000"); }, calls(5, "readlink /endless/5000")},
        {[&] { rename(scratch / u"m", scratch / u"o"); }, {"rename m o"}},
        {[&] { copy_symlink(scratch / u"o", scratch / u"p"); },
         {"lstat o", "readlink o", "stat p", "symlink t p"}},
        {[&] { remove(scratch / u"o"); }, {"lstat o", "unlink o"}},
        {[&] { remove(scratch / u"n"); }, {"lstat n", "rmdir n"}},
        {[&] { remove_symlink(scratch / u"p"); }, {"unlink p"}},
        {[&] { remove_directory(scratch / u"x/y"); }, {"rmdir x/y"}},
        {[&] { canonical(scratch / u"l"); }, {"stat l", "realpath l"}},
        {[&] { absolute(u"x", u"/a"); }, {}},
        {[&] { remove_all(scratch / u"d"); }, removal_of_tree},
    };
    std::string const before = std::filesystem::current_path();
    int number = 0;
    for (auto const& row : rows) {
        SCOPED_TRACE(number++);
        call_recorder recorder(root_of(scratch));
        row.action();
        calls made = recorder.calls();
        // Every prefix of the whole path is made: those up to the scratch directory are left out.
        made.erase(
            std::remove_if(made.begin(), made.end(),
                           [](std::string const& call) { return call.rfind("mkdir /", 0) == 0; }),
            made.end());
        EXPECT_EQ(made, row.expected);
    }
    static_cast<void>(::chdir(before.c_str()));
}

// What the walk makes of a directory that is no longer what it was, found at the first look
// ("openat d", first) or later, and of calls that fail.
TEST(SystemCalls, DecideHowARemovalEnds) {
    struct {
        char const* call;
        int nth, error;
        std::string outcome;
        char const* last;  // the last call made
    } const rows[] = {
        {"openat d", 1, ENOENT, "ok", "openat d"},
        {"openat d", 1, EMFILE, "SystemError [@/d] EMFILE", "openat d"},
        {"openat d", 2, ENOENT, "ok", "closedir"},
        {"openat d", 2, EACCES, "AccessDenied [@/d]", "closedir"},
        {"openat d", 1, ENOTDIR, "FileIsDirectory [@/d]", "unlinkat d"},
        {"openat d", 2, ELOOP, "FileIsDirectory [@/d]", "unlinkat d"},
        {"opendir d", 1, EMFILE, "SystemError [@/d] EMFILE", "opendir d"},
        {"readdir", 1, EIO, "SystemError [@/d] EIO", "closedir"},
        {"lstat d/s", 1, ENOENT, "PathNotFound", "closedir"},
        {"lstat d/s/f", 1, EIO, "SystemError [@/d/s/f] EIO", "closedir"},
        {"unlink d/s/f", 1, EPERM, "SystemError [@/d/s/f] EPERM", "closedir"},
        {"close", 1, EIO, "ok", "rmdir d"},
        {"closedir", 1, EIO, "SystemError EIO", "closedir"},
        {"rmdir d/s", 1, EBUSY, "SystemError [@/d/s] EBUSY", "closedir"},
        {"rmdir d", 1, ENOENT, "PathNotFound [@/d]", "rmdir d"},
    };
    for (auto const& row : rows) {
        scratch_dir const scratch;
        make_tree(scratch);
        call_recorder recorder(root_of(scratch));
        recorder.fail(row.call, row.error, row.nth);
        SCOPED_TRACE(std::string(row.call) + ' ' + testing::error_name(row.error));
        EXPECT_EQ(outcome(scratch, [&] { remove_all(scratch / u"d"); }), row.outcome);
        EXPECT_EQ(recorder.calls().back(), row.last);
    }
}

TEST(SystemCalls, ADirectoryReplacedByALinkIsNotFollowed) {
    scratch_dir const scratch;
    make_tree(scratch);
    scratch.directory(u"precious");
    scratch.file(u"precious/s");
    call_recorder recorder(root_of(scratch));
    recorder.before(
        "openat d",
        [&] {
            std::filesystem::rename(utf8(scratch / u"d"), utf8(scratch / u"away"));
            scratch.link(u"d", "precious");
        },
        2);
    EXPECT_EQ(outcome(scratch, [&] { remove_all(scratch / u"d"); }), "ok");
    EXPECT_TRUE(exists(scratch / u"precious/s") && exists(scratch / u"away/s/f"));
    EXPECT_EQ(symlink_status(scratch / u"d").type, file_status::file_not_found);
}

TEST(SystemCalls, ThatFailLeaveNoDescriptorOpen) {
    for (int index = 0; index < static_cast<int>(removal_of_tree.size()); ++index) {
        scratch_dir const scratch;
        make_tree(scratch);
        std::ptrdiff_t const before = open_descriptors();
        {
            call_recorder recorder(root_of(scratch));
            recorder.fail_at(index, EIO);
            bool const is_close = removal_of_tree[static_cast<std::size_t>(index)] == "close";
            EXPECT_EQ(outcome(scratch, [&] { remove_all(scratch / u"d"); }) == "ok", is_close);
        }
        EXPECT_EQ(open_descriptors(), before) << removal_of_tree[static_cast<std::size_t>(index)];
    }
}

TEST(SystemCalls, ThatFailInARenameAreBlamedByTheTable) {
    scratch_dir const scratch;
    scratch.file(u"f");
    std::string const from = " [@/f]", to = " [@/t]";
    struct {
        int error;
        std::string outcome;
    } const rows[] = {
        {ENOENT, "PathNotFound" + to},
        {EEXIST, "FileExistsError" + to},
        {ENOTDIR, "NotDirectoryError" + to},
        {EISDIR, "FileIsDirectory" + to},
        {ENAMETOOLONG, "FileNameTooLarge" + to},
        {ENOTEMPTY, "DirectoryNotEmpty" + to},
        {EACCES, "AccessDenied" + to},
        {EINVAL, "InvalidArgument \"\"" + from + to},
        {EPERM, "SystemError" + from + to + " EPERM"},
        {EROFS, "SystemError" + from + to + " EROFS"},
        {ENOSPC, "SystemError" + from + to + " ENOSPC"},
        {0, "ok"},
    };
    for (auto const& row : rows) {
        call_recorder recorder(root_of(scratch));
        recorder.fail("rename f t", row.error);
        EXPECT_EQ(outcome(scratch, [&] { rename(scratch / u"f", scratch / u"t"); }), row.outcome);
    }
    // A source that is too long is at fault itself, whatever else is.
    std::u16string const overlong = scratch / std::u16string(1024, u'n');
    EXPECT_EQ(outcome(scratch, [&] { rename(overlong, scratch / u"t"); }),
              "FileNameTooLarge [" + utf8(overlong).replace(0, root_of(scratch).size(), "@") + "]");
}

TEST(SystemCalls, ThatFailOtherwise) {
    scratch_dir const scratch;
    scratch.file(u"f");
    std::u16string const file = scratch / u"f";
    struct {
        char const* call;
        int error;
        std::function<void()> action;
        std::string outcome;
    } const rows[] = {
        {"access f", EROFS, [&] { EXPECT_FALSE(access(file, access_write)); }, "ok"},
        {"access f", EROFS, [&] { access(file, access_read); }, "SystemError [@/f] EROFS"},
        {"access f", EIO, [&] { access(file, access_exists); }, "SystemError [@/f] EIO"},
        {"chmod f", EPERM, [&] { permissions(file, 0600); }, "SystemError [@/f] EPERM"},
        {"stat f", EINVAL, [&] { EXPECT_FALSE(exists(file)); }, "ok"},
        {"stat f", EINVAL, [&] { EXPECT_EQ(status_express_light(file).size, 0u); }, "ok"},
        {"stat f", EIO, [&] { status(file); }, "SystemError EIO"},
        {"getcwd", EACCES, [] { get_current_path(); }, "AccessDenied"},
        {"mkdir n", 0, [&] { create_directory(scratch / u"n"); }, "ok"},
        {"mkdir n", 0, [&] { create_directories(scratch / u"n"); }, "ok"},
        {"mkdir n", EROFS, [&] { create_directories(scratch / u"n/m"); },
         "SystemError [@/n] EROFS"},
        {"symlink t l", ENOSPC, [&] { create_symlink(u"t", scratch / u"l"); },
         "SystemError [t] [@/l] ENOSPC"},
        {"stat l", EACCES, [&] { create_symlink(u"t", scratch / u"l"); }, "AccessDenied [@/l]"},
        {"realpath f", EACCES, [&] { canonical(file); }, "AccessDenied [@/f]"},
        {"unlink f", EPERM, [&] { remove_file(file); }, "FileIsDirectory [@/f]"},
        {"unlink f", EPERM, [&] { remove(file); }, "SystemError [@/f] EPERM"},
        {"lstat f", EIO, [&] { copy(file, scratch / u"g"); }, "SystemError EIO"},
    };
    for (auto const& row : rows) {
        call_recorder recorder(root_of(scratch));
        recorder.fail(row.call, row.error);
        EXPECT_EQ(outcome(scratch, row.action), row.outcome) << row.call;
    }
    EXPECT_EQ(outcome(scratch, [] { read_symlink(u"/negative"); }),
              "SystemError " + std::to_string(ENAMETOOLONG));
}

}  // namespace
}  // namespace ko::filesystem

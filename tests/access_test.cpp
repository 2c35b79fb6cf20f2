#include <sys/stat.h>

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

using status_constants = file_status;

mode_t mode_of(std::u16string const& path) {
    struct stat found {};
    scratch_dir::must(::stat(utf8(path).c_str(), &found) == 0);
    return found.st_mode & 07777;
}

TEST(Access, AnswersByTheModeAskedFor) {
    scratch_dir const scratch;
    std::u16string const file = scratch.file(u"\u00E9"), missing = scratch / u"missing";
    scratch_dir::must(::chmod(utf8(file).c_str(), 0444) == 0);
    std::u16string const closed = scratch.directory(u"closed", 0) + u"/x";
    std::u16string const secret = scratch.file(u"secret");
    scratch_dir::must(::chmod(utf8(secret).c_str(), 0) == 0);
    struct {
        std::u16string path;
        unsigned int mode;
        std::string outcome;
    } const rows[] = {
        {file, access_exists, "yes"},
        {file, access_read, "yes"},
        {file, access_read | access_write, "no"},
        {file, access_execute, "no"},
        {scratch / u"", access_execute | access_read | access_exists, "yes"},
        {missing, access_exists, "no"},
        {missing, access_exists | access_write, "no"},
        {missing, access_read, "PathNotFound [@/missing]"},
        {file + u"/x", access_exists, "NotDirectoryError [@/\u00E9/x]"},
        {secret, access_read, "no"},
        {secret, access_read | access_exists, "no"},
        {closed, access_exists, "AccessDenied [@/closed/x]"},
        {closed, access_exists | access_write, "AccessDenied [@/closed/x]"},
        {closed, access_read, "no"},
        {u"", 0, "InvalidArgument \"Empty Path not permitted\""},
        {file, 0, "InvalidArgument \"Unsupported Access Mode\""},
        {file, 16, "InvalidArgument \"Unsupported Access Mode\""},
        {file, ~0u, "InvalidArgument \"Unsupported Access Mode\""},
        {file + u'\0', access_exists, "InvalidArgument \"\" [@/\u00E9\\0]"},
    };
    // access(2) asks for the real user, so the whole test runs as another one in a child process.
    testing::as_unprivileged_child([&] {
        for (auto const& row : rows) {
            bool granted = false;
            std::string result = outcome(scratch, [&] { granted = access(row.path, row.mode); });
            if (result == "ok") result = granted ? "yes" : "no";
            EXPECT_EQ(result, row.outcome) << utf8(row.path) << ' ' << row.mode;
            if (row.path.find(u"//") != row.path.npos) continue;
            result = outcome(scratch, [&] { granted = access(upath(row.path), row.mode); });
            EXPECT_EQ(result == "ok" ? (granted ? "yes" : "no") : result, row.outcome);
        }
    });
}

TEST(Permissions, AreSetAddedAndRemoved) {
    scratch_dir const scratch;
    std::u16string const file = scratch.file(u"f");
    struct {
        mode_t before;
        unsigned int perms;
        mode_t after;
    } const rows[] = {
        {0200, status_constants::owner_read | status_constants::perms_add, 0600},
        {0664, status_constants::group_write | status_constants::perms_remove, 0644},
        {0644, status_constants::owner_all, 0700},
        {0644, 0, 0},
        {0644, status_constants::hidden_file | status_constants::owner_read, 0400},
        {0644, status_constants::archive_file | status_constants::perms_add, 0644},
        {0644, 0xF000 | 0777 | status_constants::perms_remove, 0},
        {0644, status_constants::set_uid_on_exec | status_constants::perms_add, 04644},
        {04644, status_constants::perms_add, 04644},
        {0644, status_constants::owner_read | status_constants::perms_symlink, 0400},
    };
    for (auto const& row : rows)
        for (std::u16string const& path : {file, scratch / u"/f/"}) {
            scratch_dir::must(::chmod(utf8(file).c_str(), row.before) == 0);
            permissions(path, row.perms);
            EXPECT_EQ(mode_of(file), row.after) << std::oct << row.before << ' ' << row.perms;
        }
    std::u16string const link = scratch.link(u"link", "f");
    permissions(upath(link), 0640);
    EXPECT_EQ(mode_of(file), 0640u) << "the link's target is meant";
}

TEST(Permissions, RefuseWhatTheyCannotDo) {
    scratch_dir const scratch;
    std::u16string const file = scratch.file(u"f");
    struct {
        std::u16string path;
        unsigned int perms;
        std::string outcome;
    } const rows[] = {
        {u"", 0xFFFF, "InvalidArgument \"Empty Path not permitted\""},
        {file, status_constants::perms_add | status_constants::perms_remove,
         "InvalidArgument \"File Permission not valid\""},
        {file, 0xFFFF, "InvalidArgument \"File Permission not valid\""},
        {file, 0xFFFF | status_constants::perms_add,
         "InvalidArgument \"File Permission not valid\""},
        {scratch / u"missing", 0644, "PathNotFound [@/missing]"},
        {scratch.link(u"dangling", "x"), 0644, "PathNotFound [@/dangling]"},
        {file + u"/x", 0644, "NotDirectoryError"},  // by the status reader, which knows no path
        {scratch.link(u"loop", "loop"), 0644, "SystemError ELOOP"},
    };
    for (auto const& row : rows)
        EXPECT_EQ(outcome(scratch, [&] { permissions(row.path, row.perms); }), row.outcome);
#ifdef __linux__
    // Linux has no permissions of links; the C library says so.
    auto const on_link = [&] { permissions(scratch / u"loop", 0600 | file_status::perms_symlink); };
    EXPECT_EQ(outcome(scratch, on_link), "SystemError [@/loop] " + std::to_string(EOPNOTSUPP));
    EXPECT_EQ(mode_of(file), 0644u);
#endif
}

}  // namespace
}  // namespace ko::filesystem

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>
#include <boost/date_time/gregorian/gregorian_types.hpp>

#include <ko/filesystem.hpp>

#include "support/caught.hpp"
#include "support/files.hpp"

namespace ko::filesystem {
namespace {

using testing::caught;
using testing::scratch_dir;
using testing::utf8;

class Status : public ::testing::Test {
protected:
    void set_times(std::u16string const& path, timespec accessed, timespec written) {
        timespec const times[] = {accessed, written};
        scratch_dir::must(::utimensat(AT_FDCWD, utf8(path).c_str(), times, 0) == 0);
    }

    scratch_dir scratch;
};

void expect_nothing(file_status const& s) {
    EXPECT_EQ(s.type, file_status::file_not_found);
    EXPECT_EQ(s.permissions, 0u);
    EXPECT_TRUE(s.last_access_time.is_not_a_date_time());
    EXPECT_TRUE(s.last_write_time.is_not_a_date_time());
    EXPECT_TRUE(s.last_status_change_time.is_not_a_date_time());
    EXPECT_EQ(s.size, 0u);
}

TEST_F(Status, TellsTheTypeOfWhatIsThere) {
    std::u16string const fifo = scratch / u"fifo", socket = scratch / u"socket";
    scratch_dir::must(::mkfifo(utf8(fifo).c_str(), 0600) == 0);
    ::sockaddr_un address{};
    address.sun_family = AF_UNIX;
    utf8(socket).copy(address.sun_path, sizeof address.sun_path - 1);
    int const descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
    scratch_dir::must(::bind(descriptor, reinterpret_cast<::sockaddr*>(&address), sizeof address) ==
                      0);
    ::close(descriptor);
    std::u16string const file = scratch.file(u"\u6F22 \U0001F600", "12 bytes, eh");
    struct {
        std::u16string path;
        std::uint32_t followed, itself;
        bool exists;
    } const rows[] = {
        {file, file_status::regular_file, file_status::regular_file, true},
        {scratch.directory(u"d"), file_status::directory_file, file_status::directory_file, true},
        {fifo, file_status::fifo_file, file_status::fifo_file, true},
        {socket, file_status::socket_file, file_status::socket_file, true},
        {u"/dev/null", file_status::character_file, file_status::character_file, true},
        {scratch.link(u"to d", "d"), file_status::directory_file, file_status::symlink_file, true},
        {scratch.link(u"dangling", "x"), file_status::file_not_found, file_status::symlink_file,
         false},
        {scratch / u"missing", file_status::file_not_found, file_status::file_not_found, false},
        {scratch / u"x\xD800", file_status::file_not_found, file_status::file_not_found, false},
        {file + u'\0', file_status::file_not_found, file_status::file_not_found, false},
        {u"", file_status::file_not_found, file_status::file_not_found, false},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(utf8(row.path));
        EXPECT_EQ(exists(row.path), row.exists);
        EXPECT_EQ(status(row.path).type, row.followed);
        EXPECT_EQ(symlink_status(row.path).type, row.itself);
        EXPECT_EQ(status_express_light(row.path).type, row.followed);
        upath const p(row.path);
        EXPECT_EQ(exists(p), row.exists);
        EXPECT_EQ(status(p).type, row.followed);
        EXPECT_EQ(symlink_status(p).type, row.itself);
        if (row.followed == file_status::file_not_found) {
            expect_nothing(status(row.path));
            EXPECT_TRUE(status_express_light(row.path).last_write_time.is_not_a_date_time());
        }
    }
    EXPECT_EQ(status(file).size, 12u);
    EXPECT_EQ(status_express_light(file).size, 12u);
    EXPECT_EQ(symlink_status(scratch / u"dangling").size, 1u);
}

TEST_F(Status, TellsPermissionsAndTimes) {
    std::u16string const file = scratch.file(u"f");
    scratch_dir::must(::chmod(utf8(file).c_str(), 04751) == 0);
    EXPECT_EQ(status(file).permissions, file_status::set_uid_on_exec | 0751u);

    boost::posix_time::ptime const epoch(boost::gregorian::date(1970, 1, 1));
    struct {
        timespec time;
        std::int64_t microseconds;
    } const rows[] = {
        {{1, 500'000'000}, 1'500'000},
        {{0, 0}, 0},
        {{-1, 999'999'999}, -1},
        {{-86400, 0}, -86'400'000'000},
        {{1'700'000'000, 123'456'789}, 1'700'000'000'123'456},
    };
    for (auto const& row : rows) {
        set_times(file, {0, 0}, row.time);
        EXPECT_EQ((status(file).last_write_time - epoch).total_microseconds(), row.microseconds);
        EXPECT_EQ(status_express_light(file).last_write_time, status(file).last_write_time);
        set_times(file, row.time, {0, 0});
        EXPECT_EQ((status(file).last_access_time - epoch).total_microseconds(), row.microseconds);
    }
    EXPECT_GT(status(file).last_status_change_time,
              boost::posix_time::ptime(boost::gregorian::date(2001, 1, 1)));
}

TEST_F(Status, MakesTheNativeFormButForExpressLight) {
    std::u16string const file = scratch.file(u"f");
    testing::environment_guard const home("HOME", utf8(scratch / u"").c_str());
    EXPECT_TRUE(exists(u"~//f/"));
    EXPECT_EQ(status(u"~//f/").type, file_status::regular_file);
    EXPECT_EQ(symlink_status(u"~//f/").type, file_status::regular_file);
    EXPECT_EQ(status_express_light(u"~/f").type, file_status::file_not_found);
    EXPECT_TRUE(caught<NotDirectoryError>([&] { status_express_light(file + u'/'); }));

    testing::environment_guard const unknown("HOME", "/\xFF");
    EXPECT_FALSE(exists(u"~"));  // names nothing rather than a file called "~"
}

TEST_F(Status, ReportsFailures) {
    std::u16string const below = scratch.file(u"f") + u"/x";
    std::u16string const loop = scratch.link(u"loop", "loop");
    std::u16string const long_name = scratch / std::u16string(300, u'n');
    EXPECT_FALSE(exists(below));
    for (auto const query :
         {status, static_cast<file_status (*)(std::u16string const&)>(symlink_status)}) {
        auto const error = caught<NotDirectoryError>([&] { query(below); });
        ASSERT_TRUE(error);
        EXPECT_EQ(error->path(), u"");
        EXPECT_TRUE(caught<FileNameTooLarge>([&] { query(long_name); }));
    }
    auto const not_directory = caught<NotDirectoryError>([&] { status_express_light(below); });
    ASSERT_TRUE(not_directory);
    EXPECT_EQ(not_directory->path(), below);

    auto const with_path = caught<SystemError>([&] { exists(loop); });
    ASSERT_TRUE(with_path);
    EXPECT_EQ(with_path->path(), loop);
    EXPECT_EQ(with_path->system_error_number(), ELOOP);
    auto const without_path = caught<SystemError>([&] { status(loop); });
    ASSERT_TRUE(without_path);
    EXPECT_EQ(without_path->path(), u"");
    EXPECT_EQ(without_path->arguments(), std::vector<std::u16string>{u""});
    auto const too_large = caught<FileNameTooLarge>([&] { exists(long_name); });
    ASSERT_TRUE(too_large);
    EXPECT_EQ(too_large->path(), long_name);
}

TEST_F(Status, ReportsRefusedAccess) {
    std::u16string const path = scratch.directory(u"closed", 0) + u"/x";
    testing::unprivileged const guard;
    auto const from_exists = caught<AccessDenied>([&] { exists(path); });
    ASSERT_TRUE(from_exists);
    EXPECT_EQ(from_exists->path(), path);
    auto const from_status = caught<AccessDenied>([&] { status(upath(path)); });
    ASSERT_TRUE(from_status);
    EXPECT_EQ(from_status->path(), u"");
    auto const from_light = caught<AccessDenied>([&] { status_express_light(path); });
    ASSERT_TRUE(from_light);
    EXPECT_EQ(from_light->path(), path);
}

}  // namespace
}  // namespace ko::filesystem

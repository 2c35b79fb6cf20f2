#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>
#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/posix_time_duration.hpp>
#include <boost/function/function_fwd.hpp>

#include <ko/filesystem/exceptions.hpp>
#include <ko/filesystem/posix/status_reader.hpp>

#include "support/caught.hpp"

namespace ko::filesystem::detail {
namespace {

using ko::filesystem::testing::caught;

template <class Change>
file_status read(Change change) {
    return status_from_stat([change](struct stat* found) {
        *found = {};
        change(*found);
        return 0;
    });
}

TEST(StatusReader, TranslatesEveryType) {
    std::uint32_t const types[16] = {0,
                                     file_status::fifo_file,
                                     file_status::character_file,
                                     0,
                                     file_status::directory_file,
                                     0,
                                     file_status::block_file,
                                     0,
                                     file_status::regular_file,
                                     0,
                                     file_status::symlink_file,
                                     0,
                                     file_status::socket_file,
                                     0,
                                     0,
                                     0};
    for (unsigned bits = 0; bits != 16; ++bits) {
        file_status const s = read([bits](struct stat& found) {
            found.st_mode = static_cast<mode_t>(bits << 12 | 07777);
        });
        EXPECT_EQ(s.type, types[bits]) << bits;
        EXPECT_EQ(s.permissions, 07777u);
    }
}

TEST(StatusReader, SaturatesTimes) {
#ifdef __APPLE__
    auto const written = &stat::st_mtimespec;
#else
    auto const written = &stat::st_mtim;
#endif
    boost::posix_time::ptime const epoch(boost::gregorian::date(1970, 1, 1));
    using limits = std::numeric_limits<std::int64_t>;
    // The last count that is a time, less the count of 1970: what is above is special.
    std::int64_t const last = limits::max() - 2 - 210'866'803'200'000'000;
    struct {
        std::int64_t seconds;
        long nanoseconds;
        boost::posix_time::ptime time;
    } const rows[] = {
        {limits::max(), 999'999'999, boost::posix_time::pos_infin},
        {limits::min(), 0, boost::posix_time::neg_infin},
        {last / 1'000'000, last % 1'000'000 * 1000, epoch + boost::posix_time::microseconds(last)},
        {last / 1'000'000, (last % 1'000'000 + 1) * 1000, boost::posix_time::pos_infin},
        {last / 1'000'000 + 1, 0, boost::posix_time::pos_infin},
        {1, 500'000'000, epoch + boost::posix_time::milliseconds(1500)},
    };
    for (auto const& row : rows) {
        file_status const s = read([&](struct stat& found) {
            found.*written = {static_cast<time_t>(row.seconds), row.nanoseconds};
        });
        EXPECT_EQ(s.last_write_time, row.time) << row.seconds;
    }
}

TEST(StatusReader, ReportsWhatTheCallLeavesInErrno) {
    auto const failing = [](int number) {
        return [number](struct stat*) {
            EXPECT_EQ(errno, 0);
            errno = number;
            return -1;
        };
    };
    EXPECT_EQ(status_from_stat(failing(ENOENT)).type, file_status::file_not_found);
    EXPECT_TRUE(caught<InvalidArgument>([&] { status_from_stat(failing(EINVAL)); }));
    auto const error = caught<SystemError>([&] { status_from_stat(failing(EOVERFLOW)); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->system_error_number(), EOVERFLOW);
    EXPECT_THROW(status_from_stat({}), boost::bad_function_call);
}

}  // namespace
}  // namespace ko::filesystem::detail

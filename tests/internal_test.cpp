// Internal functions of the status reader, and times.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/posix_time_duration.hpp>

#include <ko/filesystem/exceptions.hpp>
#include <ko/filesystem/posix/status_reader.hpp>
#include <ko/filesystem/time.hpp>

namespace ko::filesystem::detail {
namespace {

TEST(Status, HasEveryType) {
    for (unsigned bits = 0; bits != 16; ++bits) {
        bool const known = bits == 1 || (bits != 0 && bits != 14 && bits % 2 == 0);
        EXPECT_EQ(translated_type(bits << 12 | 07777), known ? bits << 12 : 0) << bits;
    }
}

TEST(Status, SaturatesTimes) {
    boost::posix_time::ptime const epoch(boost::gregorian::date(1970, 1, 1));
    using limits = std::numeric_limits<std::int64_t>;
    // The last count that is a time, relative to 1970: those above are special values.
    std::int64_t const last = limits::max() - 2 - 210'866'803'200'000'000;
    struct {
        std::int64_t seconds, microseconds;
        boost::posix_time::ptime time;
    } const rows[] = {
        {limits::max(), 999'999, boost::posix_time::pos_infin},
        {limits::min(), 0, boost::posix_time::neg_infin},
        {last / 1'000'000, last % 1'000'000, epoch + boost::posix_time::microseconds(last)},
        {last / 1'000'000, last % 1'000'000 + 1, boost::posix_time::pos_infin},
    };
    for (auto const& [seconds, microseconds, time] : rows)
        EXPECT_EQ(to_ptime({static_cast<time_t>(seconds), static_cast<long>(microseconds * 1000)}),
                  time)
            << seconds;
}

TEST(Time, IsConvertedToThatOfTheClockAndBack) {
    using clock = std::chrono::system_clock;
    using filesystem::to_ptime;
    std::int64_t const last =
        std::chrono::floor<std::chrono::microseconds>(clock::duration::max()).count();
    for (std::int64_t const count : {std::int64_t{0}, std::int64_t{-1}, -last}) {
        clock::time_point const time(std::chrono::microseconds{count});
        EXPECT_EQ(julian_microseconds(to_ptime(time)), julian_microseconds_of_epoch + count);
        EXPECT_EQ(to_time_point(to_ptime(time)), time);
        auto const within = clock::duration(clock::period::den / 1'000'000 - 1);
        EXPECT_EQ(to_ptime(time + within), to_ptime(time));
    }
    EXPECT_THROW(static_cast<void>(to_time_point(boost::posix_time::ptime())), InvalidArgument);
    if constexpr (clock::period::den > 1'000'000) {  // libstdc++'s, which holds less than a ptime
        for (std::int64_t const count : {last + 1, -last - 1})
            EXPECT_THROW(static_cast<void>(to_time_point(ptime_of(count))), InvalidArgument);
    } else {
        EXPECT_THROW(static_cast<void>(to_ptime(clock::time_point::max())), InvalidArgument);
    }
}

}  // namespace
}  // namespace ko::filesystem::detail

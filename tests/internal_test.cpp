// Internal functions of the status reader, and times.

#include <chrono>
#include <limits>

#include <ko/filesystem/posix/status_reader.hpp>

#include "support/files.hpp"

namespace ko::filesystem::test_support::internal_test {

using namespace detail;

TEST(Status, HasEveryType) {
    for (unsigned bits = 0; bits != 16; ++bits) {
        bool const known = bits == 1 || (bits != 0 && bits != 14 && bits % 2 == 0);
        EXPECT_EQ(translated_type(static_cast<mode_t>(bits << 12 | 07777)), known ? bits << 12 : 0)
            << bits;
    }
}

TEST(Status, SaturatesTimes) {
    using limits = std::numeric_limits<std::int64_t>;
    // The last count that is a time, relative to 1970: those above are special values.
    std::int64_t const last = limits::max() - 2 - 210'866'803'200'000'000;
    auto const check = [](std::int64_t seconds, std::int64_t microseconds,
                          boost::posix_time::ptime time) {
        auto const nanoseconds = static_cast<long>(microseconds * 1000);
        EXPECT_EQ(to_ptime({static_cast<time_t>(seconds), nanoseconds}), time) << seconds;
    };
    check(limits::max(), 999'999, boost::posix_time::pos_infin);
    check(limits::min(), 0, boost::posix_time::neg_infin);
    check(last / 1'000'000, last % 1'000'000, ptime_of(last));
    check(last / 1'000'000, last % 1'000'000 + 1, boost::posix_time::pos_infin);
}

TEST(Time, IsConvertedToThatOfTheClockAndBack) {
    using clock = std::chrono::system_clock;
    using filesystem::to_ptime;
    using std::chrono::microseconds;
    constexpr bool has_nanoseconds = clock::period::den > 1'000'000;  // libc++'s does not
    std::int64_t const last = std::chrono::floor<microseconds>(clock::duration::max()).count();
    for (std::int64_t const count : {std::int64_t{0}, std::int64_t{-1}, -last, last}) {
        if (!has_nanoseconds && std::abs(count) == last) continue;
        clock::time_point const time(microseconds{count});
        EXPECT_EQ(julian_microseconds(to_ptime(time)), julian_microseconds_of_epoch + count);
        EXPECT_EQ(to_time_point(to_ptime(time)), time);
        auto const within = clock::duration(has_nanoseconds && count != last ? 999 : 0);
        EXPECT_EQ(to_ptime(time + within), to_ptime(time));
    }
    auto const is_refused = [](auto convert, auto const& time) {
        EXPECT_THROW(static_cast<void>(convert(time)), InvalidArgument);
    };
    is_refused(to_time_point, boost::posix_time::ptime());
    if constexpr (has_nanoseconds) {
        std::int64_t beyond = last;  // not a constant, whose overflow others would warn of
        is_refused(to_time_point, ptime_of(++beyond));
        is_refused(to_time_point, ptime_of(-beyond));
    } else {
        EXPECT_THROW(static_cast<void>(to_ptime(clock::time_point::max())), InvalidArgument);
    }
}

}  // namespace ko::filesystem::test_support::internal_test

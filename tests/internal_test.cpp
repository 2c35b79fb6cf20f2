// What the library hides: the error mapping, the converters, the status reader.

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/posix_time_duration.hpp>
#include <boost/function/function_fwd.hpp>

#include <ko/filesystem.hpp>
#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/posix/encoding.hpp>
#include <ko/filesystem/posix/iconv_converter.hpp>
#include <ko/filesystem/posix/status_reader.hpp>

#include "support/outcome.hpp"

#ifdef __linux__
#include <dlfcn.h>

// These stand before the C library's: what is opened and closed is counted, and opening can fail.
namespace {
std::atomic<int> opened{0}, closed{0}, closed_unopened{0};
std::atomic<bool> fail_opening{false};
}  // namespace

extern "C" iconv_t iconv_open(char const* to, char const* from) {
    if (fail_opening) return reinterpret_cast<iconv_t>(std::intptr_t{-1});
    ++opened;
    using call = iconv_t(char const*, char const*);
    return reinterpret_cast<call*>(::dlsym(RTLD_NEXT, "iconv_open"))(to, from);
}
extern "C" int iconv_close(iconv_t converter) {
    ++(ko::filesystem::posix::detail::is_open(converter) ? closed : closed_unopened);
    return reinterpret_cast<int (*)(iconv_t)>(::dlsym(RTLD_NEXT, "iconv_close"))(converter);
}
#endif

namespace ko::filesystem::detail {
namespace {

// The fault sweep has the class for every number.
TEST(ErrorMapping, KeepsTheSecondPathWhereTheClassHasRoom) {
    struct {
        int number;
        std::string outcome;
    } const rows[] = {
        {ENOENT, "PathNotFound [f\uFFFD]"},
        {EINVAL, "InvalidArgument \"\" [f\uFFFD] [g]"},
        {EPERM, "SystemError [f\uFFFD] [g] EPERM"},
        {12345, "SystemError [f\uFFFD] [g] 12345"},
    };
    for (auto const& [number, expected] : rows)
        EXPECT_EQ(ko::filesystem::testing::outcome(
                      "@", [number = number] { throw_errno_exception(number, "f\xFF", "g"); }),
                  expected);
    for (int const number : {EINVAL, EIO, 0}) {
        try {
            throw_errno_exception(number, {}, {});
        } catch (FsysExceptionBase const& error) {
            EXPECT_EQ(error.arguments(), std::vector<std::u16string>{u""}) << number;
        }
    }
}

#ifdef __linux__
TEST(IconvConverter, IsOpenedOncePerThreadAndClosedWithIt) {
    constexpr int count = 400;
    std::vector<std::thread> threads;
    int const opened_before = opened, closed_before = closed;
    for (char16_t unit = u'\u6F22'; unit != u'\u6F22' + count; ++unit)
        threads.emplace_back([text = std::u16string(700, unit)] {
            to_filesystem(u"ascii");  // needs none
            for (int round = 0; round != 10; ++round)
                EXPECT_EQ(from_filesystem(to_filesystem(text)), text);
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(opened - opened_before, 2 * count);
    EXPECT_EQ(closed - closed_before, 2 * count);
}

TEST(IconvConverter, ThatCannotBeOpenedEmptiesTheResult) {
    fail_opening = true;
    std::thread([] {
        EXPECT_EQ(to_filesystem(u"\u00E9") + to_filesystem(u"ascii"), "ascii");
        EXPECT_EQ(from_filesystem("\xC3\xA9"), u"");
    }).join();
    fail_opening = false;
    EXPECT_EQ(closed_unopened, 0);
}
#endif

// In a process of its own, since the first conversion settles what replaces bad units.
TEST(IconvConverterDeathTest, KeepsTheFirstEncodingOfItsThreadAndOfTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    auto const convert = [] {
        auto const to = [](char const* encoding) {
            return posix::detail::to_filesystem_native_impl(u"a\u6F22\u00E9", encoding);
        };
        std::_Exit(to("ISO-8859-1") == "a\x1A\xE9" && to("UTF-8") == "a\x1A\xE9" ? 0 : 1);
    };
    EXPECT_EXIT(convert(), ::testing::ExitedWithCode(0), "");
}

TEST(IconvConverter, RejectsNamesThatItWouldMangle) {
    EXPECT_EQ(from_filesystem_strict("\xE6\xBC\xA2\xEF\xBF\xBD"), u"\u6F22\uFFFD");
    for (char const* const bad : {"\xFF", "a\xC3", "\xED\xA0\x80", "\xC3\xA9\x80"}) {
        EXPECT_EQ(from_filesystem_strict(bad), u"");
        EXPECT_EQ(from_filesystem_strict(std::string(2000, 'x') + bad), u"");
    }
}

TEST(IconvConverter, MayStopInsideAUnit) {
    iconv_t const bytes = ::iconv_open("UTF-8", "UTF-8");  // meets units as pairs of bytes
    std::string result;
    EXPECT_TRUE(posix::detail::encode(u"\xFF41", bytes, "?", result));
    EXPECT_EQ(result, "A?");
    ::iconv_close(bytes);
}

template <class Change>
file_status read(Change change) {
    return status_from_stat([change](struct stat* found) {
        *found = {};
        change(*found);
        return 0;
    });
}

TEST(StatusReader, TranslatesEveryType) {
    for (unsigned bits = 0; bits != 16; ++bits) {
        auto const mode = static_cast<mode_t>(bits << 12 | 07777);
        file_status const s = read([mode](struct stat& found) { found.st_mode = mode; });
        bool const known = bits == 1 || (bits != 0 && bits != 14 && bits % 2 == 0);
        EXPECT_EQ(s.type, known ? bits << 12 : 0) << bits;
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
        std::int64_t seconds, microseconds;
        boost::posix_time::ptime time;
    } const rows[] = {
        {limits::max(), 999'999, boost::posix_time::pos_infin},
        {limits::min(), 0, boost::posix_time::neg_infin},
        {last / 1'000'000, last % 1'000'000, epoch + boost::posix_time::microseconds(last)},
        {last / 1'000'000, last % 1'000'000 + 1, boost::posix_time::pos_infin},
        {1, 500'000, epoch + boost::posix_time::milliseconds(1500)},
    };
    for (auto const& row : rows) {
        timespec const time{static_cast<time_t>(row.seconds),
                            static_cast<long>(row.microseconds * 1000)};
        file_status const s = read([&](struct stat& found) { found.*written = time; });
        EXPECT_EQ(s.last_write_time, row.time) << row.seconds;
    }
    EXPECT_THROW(status_from_stat({}), boost::bad_function_call);
}

}  // namespace
}  // namespace ko::filesystem::detail

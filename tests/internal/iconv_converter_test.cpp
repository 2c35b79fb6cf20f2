#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <ko/filesystem/detail/encoding.hpp>
#include <ko/filesystem/posix/encoding.hpp>
#include <ko/filesystem/posix/iconv_converter.hpp>

#ifdef __linux__
#include <dlfcn.h>

// These stand before the C library's: what the library opens and closes is counted, and opening can
// be made to fail.
namespace {
std::atomic<int> opened{0};
std::atomic<int> closed{0};
std::atomic<int> closed_unopened{0};
std::atomic<bool> fail_opening{false};

template <class Function>
Function* next(char const* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}
}  // namespace

extern "C" iconv_t iconv_open(char const* to, char const* from) {
    if (fail_opening) return reinterpret_cast<iconv_t>(std::intptr_t{-1});
    ++opened;
    return next<iconv_t(char const*, char const*)>("iconv_open")(to, from);
}
extern "C" int iconv_close(iconv_t converter) {
    if (!ko::filesystem::posix::detail::is_open(converter)) return ++closed_unopened, -1;
    ++closed;
    return next<int(iconv_t)>("iconv_close")(converter);
}
#endif

namespace ko::filesystem {
namespace {

#ifdef __linux__
TEST(IconvConverter, IsOpenedOncePerThreadAndClosedWithIt) {
    std::vector<std::thread> threads;
    int const before = opened;
    ASSERT_EQ(before, closed);
    for (int i = 0; i != 8; ++i)
        threads.emplace_back([] {
            detail::to_filesystem(u"ascii");  // needs no converter
            for (int round = 0; round != 3; ++round)
                EXPECT_EQ(detail::from_filesystem(detail::to_filesystem(u"\u00E9")), u"\u00E9");
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(opened - before, 16);
    EXPECT_EQ(closed, opened);
    std::thread([] { detail::to_filesystem(u"ascii"); }).join();
    EXPECT_EQ(opened - before, 16);
}

TEST(IconvConverter, ThatCannotBeOpenedEmptiesTheResult) {
    fail_opening = true;
    std::thread([] {
        EXPECT_EQ(detail::to_filesystem(u"\u00E9"), "");
        EXPECT_EQ(detail::from_filesystem("\xC3\xA9"), u"");
        EXPECT_EQ(detail::to_filesystem(u"ascii"), "ascii");
    }).join();
    fail_opening = false;
    EXPECT_EQ(closed_unopened, 0);
}
#endif

TEST(IconvConverter, KeepsTheFirstEncodingOfItsThread) {
    std::thread([] {
        using posix::detail::get_thread_local_iconv_converter;
        iconv_t const first = get_thread_local_iconv_converter<1>("UTF-8", "UTF-16LE");
        EXPECT_EQ(get_thread_local_iconv_converter<1>("no such", "encoding"), first);
        EXPECT_NE(get_thread_local_iconv_converter<0>("UTF-16LE", "UTF-8"), first);
    }).join();
}

// In a process of its own, since the first conversion settles what replaces bad units.
TEST(IconvConverterDeathTest, SubstitutesInAnotherEncodingWithTheAsciiCharacter) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    auto const convert = [] {
        bool const right =
            posix::detail::to_filesystem_native_impl(u"a\u6F22\u00E9", "ISO-8859-1") == "a\x1A\xE9";
        std::_Exit(right ? 0 : 1);
    };
    EXPECT_EXIT(convert(), ::testing::ExitedWithCode(0), "");
}

TEST(IconvConverter, RejectsMalformedNamesWhereTheyWouldBeMangled) {
    EXPECT_EQ(detail::from_filesystem_strict("\xE6\xBC\xA2\xEF\xBF\xBD"), u"\u6F22\uFFFD");
    for (std::string const& bad :
         std::vector<std::string>{"\xFF", "a\xC3", "\xED\xA0\x80", "\xC3\xA9\x80"}) {
        EXPECT_EQ(detail::from_filesystem_strict(bad), u"");
        EXPECT_EQ(detail::from_filesystem_strict(std::string(2000, 'x') + bad), u"");
    }
}

}  // namespace
}  // namespace ko::filesystem

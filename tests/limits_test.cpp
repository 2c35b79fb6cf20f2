// How much is too much.

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <iterator>
#include <string>

#include <ko/filesystem.hpp>

#include "support/allocations.hpp"
#include "support/files.hpp"
#include "support/outcome.hpp"

namespace ko::filesystem {
namespace {

class Limits : public testing::scratch_test {};

TEST_F(Limits, OfANameAndOfAPath) {
    std::u16string const longest(NAME_MAX, u'n'), longer(NAME_MAX + 1, u'n');
    TELLS(create_directory(longest), "ok");
    TELLS(exists(longest), "yes");
    TELLS(create_directory(longer), "FileNameTooLarge [" + testing::utf8(longer) + "]");
    TELLS(exists(std::u16string(NAME_MAX / 3, u'\u6F22')), "no");  // three bytes each
    std::u16string const han(NAME_MAX / 3 + 1, u'\u6F22');
    TELLS(exists(han), "FileNameTooLarge [" + testing::utf8(han) + "]");

    std::u16string path = u".";  // native forms keep it
    while (path.size() < PATH_MAX - 3) path += u"/.";
    path.resize(PATH_MAX - 1 - (PATH_MAX - 1) % 2 - 1);
    TELLS(exists(path), "yes");
    path += std::u16string(u"/./././.");
    TELLS(exists(path), "FileNameTooLarge [" + testing::utf8(path) + "]");
    TELLS(status(path).type != 0, "FileNameTooLarge");
}

// A removal and a listing hold one descriptor for each level.
TEST_F(Limits, OfATreesDepth) {
    std::u16string path = scratch / u"deep";
    for (int level = 0; level < 200; ++level) path += u"/d";
    create_directories(path);
    testing::as_unprivileged_child([&] {
        ::rlimit const few{100, 100};
        testing::scratch_dir::must(::setrlimit(RLIMIT_NOFILE, &few) == 0);
        int const next = ::dup(0);
        ::close(next);
        recursive_directory_iterator it(scratch / u"deep");  // lives on, with nothing open
        for (std::string const& outcome :
             {testing::outcome(scratch.path8(), [&] { remove_all(scratch / u"deep"); }),
              testing::outcome(scratch.path8(), [&] { std::advance(it, 200); })}) {
            EXPECT_EQ(outcome.rfind("SystemError [@/deep/d/d", 0), 0u) << outcome;
            EXPECT_EQ(outcome.substr(outcome.size() - 7), " EMFILE") << outcome;
        }
        int const next_now = ::dup(0);
        EXPECT_EQ(next_now, next) << "a descriptor is left open";
    });
    TELLS(remove_all(scratch / u"deep"), "ok");
    TELLS(exists(scratch / u"deep"), "no");
}

TEST_F(Limits, OfADirectorysEntries) {
    scratch.directory(u"many");
    for (int i = 0; i < 100'000; ++i) {
        std::string const name = "many/" + std::to_string(i);
        int const descriptor = ::open(name.c_str(), O_CREAT | O_WRONLY, 0600);
        testing::scratch_dir::must(descriptor != -1 && ::close(descriptor) == 0);
    }
    auto const list = [] { EXPECT_EQ(std::distance(directory_iterator(u"many"), {}), 100'000); };
    EXPECT_LT(testing::count_allocations(list), 20);
    EXPECT_LT(testing::count_allocations([] { remove_all(u"many"); }), 10);
    TELLS(exists(u"many"), "no");
}

TEST_F(Limits, OfAFilesSize) {
    constexpr std::uint64_t size = (5ull << 30) + 1;
    int const descriptor = ::open("sparse", O_CREAT | O_WRONLY, 0600);
    testing::scratch_dir::must(::ftruncate(descriptor, static_cast<off_t>(size)) == 0 &&
                               ::close(descriptor) == 0);
    EXPECT_EQ(status(u"sparse").size, size);
    EXPECT_EQ(status_express_light(u"sparse").size, size);
    TELLS(rename(u"sparse", u"renamed"), "ok");
    EXPECT_EQ(symlink_status(u"renamed").size, size);
}

}  // namespace
}  // namespace ko::filesystem

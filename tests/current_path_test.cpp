#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <thread>

#include <gtest/gtest.h>

#include <ko/filesystem.hpp>

#include "support/files.hpp"
#include "support/outcome.hpp"

namespace ko::filesystem {
namespace {

using testing::outcome;
using testing::scratch_dir;
using testing::utf8;

class CurrentPath : public ::testing::Test {
protected:
    ~CurrentPath() override { static_cast<void>(::chdir(before_.c_str())); }

    scratch_dir scratch;

private:
    std::string before_ = std::filesystem::current_path();
};

TEST_F(CurrentPath, IsChangedAndRead) {
    std::u16string const dir = scratch.directory(u"\u6F22");
    EXPECT_TRUE(change_current_path(dir + u"//"));
    EXPECT_EQ(get_current_path(), canonical(dir));
    EXPECT_TRUE(change_current_path(upath(u"..")));
    EXPECT_EQ(get_current_path(), canonical(scratch / u""));
    EXPECT_EQ(detail::get_cwd_mt(), utf8(get_current_path()));
    EXPECT_TRUE(detail::set_cwd_mt(utf8(dir)));
    EXPECT_EQ(get_current_path(), canonical(dir));
}

TEST_F(CurrentPath, StaysWhereItIsAfterAFailure) {
    change_current_path(scratch / u"");
    std::u16string const here = get_current_path();
    EXPECT_FALSE(change_current_path(u""));
    EXPECT_FALSE(change_current_path(upath()));
    EXPECT_EQ(outcome(scratch, [&] { change_current_path(scratch / u"missing"); }),
              "PathNotFound [@/missing]");
    std::u16string const file = scratch.file(u"f");
    EXPECT_EQ(outcome(scratch, [&] { change_current_path(file); }), "NotDirectoryError [@/f]");
    EXPECT_EQ(outcome(scratch, [&] { detail::set_cwd_mt(std::string("/\0x", 3)); }),
              "InvalidArgument \"\" [/\\0x]");
    EXPECT_EQ(get_current_path(), here);
}

TEST_F(CurrentPath, IsReadHoweverLong) {
    change_current_path(scratch.directory(u"d"));
    std::u16string expected = get_current_path();
    for (int level = 0; level < 12; ++level) {
        std::string const name(200, static_cast<char>('a' + level));
        scratch_dir::must(::mkdir(name.c_str(), 0755) == 0 && ::chdir(name.c_str()) == 0);
        expected += u'/' + std::u16string(name.begin(), name.end());
        ASSERT_EQ(get_current_path(), expected);
    }
    EXPECT_EQ(absolute(u"x"), expected + u"/x");
}

TEST_F(CurrentPath, IsEmptyWhereItCannotBeTold) {
    scratch_dir::must(::mkdir((utf8(scratch / u"d\u00E9")).c_str(), 0755) == 0);
    std::string const bad = utf8(scratch / u"bad") + "\xFF";
    scratch_dir::must(::mkdir(bad.c_str(), 0755) == 0 && ::chdir(bad.c_str()) == 0);
    EXPECT_EQ(get_current_path(), u"");
    EXPECT_EQ(absolute(u"x"), u"");
    EXPECT_EQ(canonical(u"."), u"");
    scratch.file(u"bad");
    EXPECT_EQ(weakly_canonical(u"./missing"), u"") << "not the missing part alone";

    scratch_dir::must(::rmdir(bad.c_str()) == 0);
    EXPECT_EQ(outcome(scratch, [] { get_current_path(); }), "PathNotFound");
}

TEST_F(CurrentPath, IsReadWhileAnotherThreadChangesIt) {
    std::u16string const a = canonical(scratch.directory(u"a"));
    std::u16string const b = canonical(scratch.directory(u"b"));
    change_current_path(a);
    std::thread changer([&] {
        for (int round = 0; round < 500; ++round) change_current_path(round % 2 == 0 ? b : a);
    });
    for (int round = 0; round < 500; ++round) {
        std::u16string const read = get_current_path();
        EXPECT_TRUE(read == a || read == b);
    }
    changer.join();
}

}  // namespace
}  // namespace ko::filesystem

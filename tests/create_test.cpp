#include <sys/stat.h>
#include <unistd.h>

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

class Create : public ::testing::Test {
protected:
    ~Create() override { ::umask(before_); }

    mode_t mode_of(std::u16string const& name) {
        struct stat found {};
        scratch_dir::must(::stat(utf8(scratch / name).c_str(), &found) == 0);
        return found.st_mode;
    }

    scratch_dir scratch;

private:
    mode_t before_ = ::umask(002);
};

TEST_F(Create, MakesDirectories) {
    create_directory(scratch / u"\u6F22//");
    EXPECT_EQ(mode_of(u"\u6F22"), S_IFDIR | 0775u);
    ::umask(027);
    create_directories(upath(scratch / u"x//y/z"));
    for (char16_t const* const made : {u"x", u"x/y", u"x/y/z"})
        EXPECT_EQ(mode_of(made), S_IFDIR | 0750u) << utf8(made);
    create_directories(scratch / u"x/y/w");
    EXPECT_EQ(mode_of(u"x/y/w"), S_IFDIR | 0750u);
}

TEST_F(Create, ReportsWhichDirectoryCannotBeMade) {
    scratch.file(u"file");
    scratch.directory(u"d");
    struct {
        std::u16string path;
        std::string directory, directories;
    } const rows[] = {
        {u"/", "FileExistsError [/]", "FileExistsError [/]"},
        {u"///", "FileExistsError [/]", "FileExistsError [/]"},
        {u"", "PathNotFound", "InvalidArgument \"Empty Path not permitted\""},
        {scratch / u"d", "FileExistsError [@/d]", "FileExistsError [@/d]"},
        {scratch / u"file", "FileExistsError [@/file]", "FileExistsError [@/file]"},
        {scratch / u"file/b", "NotDirectoryError [@/file/b]", "NotDirectoryError [@/file/b]"},
        {scratch / u"file/b/c", "NotDirectoryError [@/file/b/c]", "NotDirectoryError [@/file/b]"},
        {scratch / u"x\xD800", "PathNotFound", "PathNotFound"},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(outcome(scratch, [&] { create_directory(row.path); }), row.directory);
        EXPECT_EQ(outcome(scratch, [&] { create_directories(row.path); }), row.directories);
        EXPECT_EQ(outcome(scratch, [&] { create_directory(upath(row.path)); }), row.directory);
    }
    EXPECT_EQ(outcome(scratch, [&] { create_directory(scratch / u"no/b"); }),
              "PathNotFound [@/no/b]");
    std::u16string const long_name(300, u'n');
    EXPECT_EQ(outcome(scratch, [&] { create_directories(scratch / (u"n/" + long_name + u"/x")); }),
              "FileNameTooLarge [@/n/" + utf8(long_name) + "]");
    EXPECT_EQ(mode_of(u"n") & S_IFMT, static_cast<mode_t>(S_IFDIR)) << "what was made stays";
}

TEST_F(Create, MakesLinks) {
    testing::environment_guard const home("HOME", "/h");
    scratch.file(u"file");
    scratch.link(u"dangling", "x");
    struct {
        std::u16string target, link;
        unsigned int type;
        std::string outcome;
    } const rows[] = {
        {u"missing", u"/a", file_status::file_type_auto, "ok"},
        {u"\u6F22//x", u"/b", file_status::regular_file, "ok"},
        {u"..", u"/c", file_status::directory_file, "ok"},
        {u"~/x", u"/e", file_status::file_type_auto, "ok"},
        {u"t", u"/f", 0, "InvalidArgument \"Unsupported file type\""},
        {u"t", u"/f", file_status::symlink_file, "InvalidArgument \"Unsupported file type\""},
        {u"", u"/f", 0, "InvalidArgument \"Empty Path not permitted\""},
        {u"t", u"", 0, "InvalidArgument \"Empty Path not permitted\""},
        {u"t", u"/file", file_status::file_type_auto, "FileExistsError"},
        {u"t", u"/dangling", file_status::file_type_auto, "FileExistsError [t]"},
        {u"t", u"/no/l", file_status::file_type_auto, "PathNotFound [t]"},
        {u"t", u"/file/l", file_status::file_type_auto, "NotDirectoryError [t]"},
    };
    for (auto const& row : rows) {
        std::u16string const link = row.link.empty() ? u"" : scratch / row.link;
        EXPECT_EQ(outcome(scratch, [&] { create_symlink(row.target, link, row.type); }),
                  row.outcome)
            << utf8(row.target);
    }
    EXPECT_EQ(read_symlink(scratch / u"a"), u"missing");
    EXPECT_EQ(read_symlink(scratch / u"b"), u"\u6F22/x");
    EXPECT_EQ(read_symlink(scratch / u"e"), u"/h/x");
    create_symlink(upath(u"~", false), upath(scratch / u"g"));
    EXPECT_EQ(read_symlink(scratch / u"g"), u"~") << "a path object's text is not expanded";
    EXPECT_EQ(read_symlink(upath(scratch / u"g")).native(), u"/h") << "but that of a link is";
}

TEST_F(Create, ReadsLinks) {
    std::string const long_text = std::string(1024, 'x'), longer = std::string(3000, 'y');
    scratch.link(u"1023", long_text.substr(1));
    scratch.link(u"1024", long_text);
    scratch.link(u"3000", longer);
    scratch.link(u"bad", "x\xFF");
    struct {
        std::u16string path;
        std::u16string text;
    } const rows[] = {
        {scratch / u"1023", std::u16string(1023, u'x')},
        {scratch / u"1024//", std::u16string(1024, u'x')},
        {scratch / u"3000", std::u16string(3000, u'y')},
        {scratch / u"bad", u""},
        {u"", u""},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(read_symlink(row.path), row.text);
        EXPECT_EQ(read_symlink(upath(row.path)), upath(row.text));
    }
    std::u16string const file = scratch.file(u"f\u00E9");
    EXPECT_EQ(outcome(scratch, [&] { read_symlink(file); }), "InvalidArgument \"\" [@/f\u00E9]");
    EXPECT_EQ(outcome(scratch, [&] { read_symlink(file + u"/x"); }),
              "NotDirectoryError [@/f\u00E9/x]");
    EXPECT_EQ(outcome(scratch, [&] { read_symlink(upath(scratch / u"no")); }),
              "PathNotFound [@/no]");
}

}  // namespace
}  // namespace ko::filesystem

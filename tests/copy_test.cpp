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

void set_write_time(std::u16string const& path, time_t seconds) {
    timespec const times[] = {{seconds, 0}, {seconds, 0}};
    scratch_dir::must(::utimensat(AT_FDCWD, utf8(path).c_str(), times, 0) == 0);
}

mode_t mode_of(std::u16string const& path) {
    struct stat found {};
    return ::lstat(utf8(path).c_str(), &found) == 0 ? found.st_mode : 0;
}

void make_fifo(std::u16string const& path) {
    scratch_dir::must(::mkfifo(utf8(path).c_str(), 0600) == 0);
}

// Every value of the options with every kind of source and target, against the rules once more.

enum class source { missing, file, directory, to_file, to_directory, dangling, to_link, fifo };
enum class target { missing, old_file, new_file, directory, dangling };

constexpr source sources[] = {source::missing, source::file,         source::directory,
                              source::to_file, source::to_directory, source::dangling,
                              source::to_link, source::fifo};
constexpr target targets[] = {target::missing, target::old_file, target::new_file,
                              target::directory, target::dangling};

/// What is at "to" afterwards: nothing, the content of a file, a link, or a directory and what the
/// file "f" in it holds.
std::string state(scratch_dir const& scratch) {
    mode_t const mode = mode_of(scratch / u"to");
    if (mode == 0) return "nothing";
    if (S_ISLNK(mode)) return "link " + utf8(read_symlink(scratch / u"to"));
    if (S_ISREG(mode)) return scratch.content(u"to");
    return "directory " + (mode_of(scratch / u"to/f") == 0 ? "" : scratch.content(u"to/f"));
}

struct result {
    std::string outcome, state;
};

class rules {
public:
    rules(scratch_dir const& scratch, source from, target to, unsigned options)
        : scratch_(scratch), from_(from), to_(to), options_(options), before_(state(scratch)) {}

    result expected() const {
        std::string const invalid = "InvalidArgument \"Invalid combination selected: ";
        if (has(16) && has(32))
            return failed(invalid + "copy_symlinks & skip_symlinks cannot be used together\"");
        if (has(1) + has(2) + has(4) > 1)
            return failed(invalid +
                          "overwrite_if_exists, skip_existing & update_existing cannot be used "
                          "together\"");
        if (from_ == source::missing) return failed("PathNotFound");
        if (from_ == source::fifo) return failed("InvalidArgument \"Unsupported file type\"");
        if (from_ == source::file) return file("from");
        if (from_ == source::directory) return directory("from");
        if (has(16)) return link(utf8(read_symlink(scratch_ / u"from")));
        if (has(32) || from_ == source::to_link) return {"ok", before_};
        if (from_ == source::dangling) return failed("PathNotFound [@/from]");
        return from_ == source::to_file ? file("a file") : directory("a directory");
    }

private:
    int has(unsigned bit) const { return (options_ & bit) != 0; }
    bool to_exists() const { return to_ != target::missing && to_ != target::dangling; }
    bool to_is_file() const { return to_ == target::old_file || to_ == target::new_file; }
    result failed(std::string const& outcome) const { return {outcome, before_}; }
    std::string path(std::string const& name) const { return utf8(scratch_ / u"") + name; }

    result link(std::string const& text) const {
        if (to_exists()) return failed("FileExistsError");
        std::string shown = text;
        if (to_ == target::dangling && text.rfind(path(""), 0) == 0)
            shown = "@/" + text.substr(path("").size());
        if (to_ == target::dangling) return failed("FileExistsError [" + shown + "]");
        return {"ok", "link " + text};
    }
    result file(std::string const& from) const {
        if (has(2)) return to_exists() ? result{"ok", before_} : content(from, false);
        if (has(4)) return to_ == target::new_file ? result{"ok", before_} : content(from, true);
        return has(64) ? link(path(from)) : content(from, has(1) != 0);
    }
    result content(std::string const& from, bool overwrite) const {
        if (to_ == target::missing || (to_is_file() && overwrite)) return {"ok", "source"};
        if (!overwrite) return failed("FileExistsError [@/to]");
        if (to_ == target::directory) return failed("FileIsDirectory [@/" + from + "]");
        return {"ok", before_};  // through the dangling link
    }
    result directory(std::string const& from) const {
        if (has(64)) return link(path(from));
        if (has(8) == 0) {
            if (to_ == target::missing) return {"ok", "directory "};
            return to_ == target::directory ? result{"ok", before_}
                                            : failed("FileExistsError [@/to]");
        }
        bool const may_exist = has(1) + has(2) + has(4) != 0;
        if (to_exists() && !may_exist) return failed("FileExistsError [@/to]");
        if (to_ == target::dangling) return failed("FileExistsError [@/to]");
        if (to_ == target::missing) return {"ok", "directory source"};
        if (to_is_file())
            return failed(has(4) ? "NotDirectoryError" : "NotDirectoryError [@/" + from + "/f]");
        return {"ok", has(1) || has(4) ? "directory source" : before_};
    }

    scratch_dir const& scratch_;
    source from_;
    target to_;
    unsigned options_;
    std::string before_;
};

void make_source(scratch_dir const& scratch, source kind) {
    std::u16string const file = scratch.file(u"a file", "source");
    std::u16string const directory = scratch.directory(u"a directory");
    scratch.file(u"a directory/f", "source");
    scratch.link(u"a link", utf8(file));
    set_write_time(file, 1000);
    set_write_time(directory + u"/f", 1000);
    switch (kind) {
        case source::missing: return;
        case source::file: return set_write_time(scratch.file(u"from", "source"), 1000);
        case source::directory:
            scratch.directory(u"from");
            return set_write_time(scratch.file(u"from/f", "source"), 1000);
        case source::to_file: return static_cast<void>(scratch.link(u"from", utf8(file)));
        case source::to_directory: return static_cast<void>(scratch.link(u"from", utf8(directory)));
        case source::dangling: return static_cast<void>(scratch.link(u"from", "nowhere"));
        case source::to_link:
            return static_cast<void>(scratch.link(u"from", utf8(scratch / u"a link")));
        case source::fifo: return make_fifo(scratch / u"from");
    }
}

void make_target(scratch_dir const& scratch, target kind) {
    std::error_code ignored;
    std::filesystem::remove_all(utf8(scratch / u"to"), ignored);
    std::filesystem::remove(utf8(scratch / u"elsewhere"), ignored);
    switch (kind) {
        case target::missing: return;
        case target::old_file: return set_write_time(scratch.file(u"to", "old"), 999);
        case target::new_file: return set_write_time(scratch.file(u"to", "new"), 1000);
        case target::directory:
            scratch.directory(u"to");
            return set_write_time(scratch.file(u"to/f", "old"), 999);
        case target::dangling: scratch.link(u"to", utf8(scratch / u"elsewhere")); return;
    }
}

TEST(Copy, FollowsTheRulesWithAllOptions) {
    for (source const from : sources) {
        scratch_dir const scratch;
        make_source(scratch, from);
        for (target const to : targets)
            for (unsigned options = 0; options != 256; ++options) {
                make_target(scratch, to);
                result const expected = rules(scratch, from, to, options).expected();
                auto const copy_it = [&] {
                    copy(scratch / u"from", scratch / u"to", static_cast<copy_option>(options));
                };
                ASSERT_EQ(outcome(scratch, copy_it), expected.outcome)
                    << int(from) << ' ' << int(to) << ' ' << options;
                ASSERT_EQ(state(scratch), expected.state)
                    << int(from) << ' ' << int(to) << ' ' << options;
            }
    }
}

TEST(Copy, ChecksItsArgumentsInOrder) {
    scratch_dir const scratch;
    std::u16string const file = scratch.file(u"f");
    std::string const empty = "InvalidArgument \"Empty Path not permitted\"";
    for (auto const operation :
         {static_cast<void (*)(upath const&, upath const&, copy_option)>(copy),
          static_cast<void (*)(upath const&, upath const&, copy_option)>(copy_file)}) {
        auto const call = [&](std::u16string const& from, std::u16string const& to,
                              unsigned options) {
            return outcome(scratch, [&] {
                operation(upath(from), upath(to), static_cast<copy_option>(options));
            });
        };
        EXPECT_EQ(call(u"", u"", 1 | 2 | 16 | 32).substr(47, 13), "copy_symlinks");
        EXPECT_EQ(call(u"", u"", 1 | 4).substr(47, 9), "overwrite");
        EXPECT_EQ(call(u"", file, 0), empty);
        EXPECT_EQ(call(file, u"", 0), empty);
        EXPECT_EQ(call(file + u'\0', file, 0), "InvalidArgument \"\" [@/f\\0]");
    }
    EXPECT_EQ(outcome(scratch, [&] { copy_directory(u"", file); }), empty);
    EXPECT_EQ(outcome(scratch, [&] { copy_directory(upath(file), upath()); }), empty);
    EXPECT_EQ(outcome(scratch, [&] { copy_symlink(u"", file); }), empty);
    EXPECT_EQ(outcome(scratch, [&] { copy_symlink(upath(file), upath()); }), empty);
}

TEST(CopyFile, ReportsThePathAtFaultInLowBytes) {
    scratch_dir const scratch;
    scratch.file(u"f");
    scratch.file(u"g");
    scratch.directory(u"d");
    make_fifo(scratch / u"fifo");
    std::u16string const long_name(300, u'n');
    auto const overwrite = copy_option::overwrite_if_exists;
    struct {
        std::u16string from, to;
        copy_option options;
        std::string outcome;
    } const rows[] = {
        {u"missing", u"x", copy_option::none, "PathNotFound [@/missing]"},
        {u"missing", u"g", copy_option::update_existing, "PathNotFound [@/missing]"},
        {u"m\u6F22\u00E9", u"x", copy_option::none, "PathNotFound [@/m\"\uFFFD]"},
        {u"f", u"no/x", copy_option::none, "PathNotFound [@/no/x]"},
        {u"f", u"g", copy_option::none, "FileExistsError [@/g]"},
        {u"f", long_name, copy_option::none, "FileNameTooLarge [@/" + utf8(long_name) + "]"},
        {u"d", u"x", copy_option::none, "SystemError [@/d] [@/x] ENOSYS"},
        {u"f", u"d", overwrite, "FileIsDirectory [@/f]"},
        {u"f/x", u"x", copy_option::none, "NotDirectoryError [@/f/x]"},
        {u"fifo", u"x", copy_option::none, "SystemError [@/fifo] [@/x] ENOSYS"},
        {u"fifo", u"g", overwrite, "SystemError [@/fifo] [@/g] ENOSYS"},
        {u"f", u"fifo", overwrite, "SystemError [@/f] [@/fifo] ENOSYS"},
        {u"f", u"fifo", copy_option::update_existing, "SystemError [@/f] [@/fifo] ENOSYS"},
        {u"f", u"fifo", copy_option::none, "FileExistsError [@/fifo]"},
    };
    for (auto const& row : rows) {
        auto const copy_it = [&] { copy_file(scratch / row.from, scratch / row.to, row.options); };
        EXPECT_EQ(outcome(scratch, copy_it), row.outcome) << utf8(row.from) << ' ' << utf8(row.to);
    }
    std::u16string const closed = scratch.directory(u"closed", 0711);
    scratch.file(u"secret");
    scratch_dir::must(::chmod(utf8(scratch / u"secret").c_str(), 0) == 0);
    testing::as_unprivileged_child([&] {
        EXPECT_EQ(outcome(scratch, [&] { copy_file(scratch / u"f", closed + u"/x"); }),
                  "AccessDenied [@/closed/x]");
        EXPECT_EQ(outcome(scratch, [&] { copy_file(scratch / u"secret", u"/tmp/ko-x"); }),
                  "AccessDenied [@/secret]");
    });
}

TEST(CopyFile, NeverOverwritesAFileWithItself) {
    scratch_dir const scratch;
    std::u16string const file = scratch.file(u"f", "precious");
    scratch_dir::must(::link(utf8(file).c_str(), utf8(scratch / u"hard").c_str()) == 0);
    scratch.link(u"link", "f");
    for (char16_t const* const name : {u"f", u"hard", u"link"}) {
        auto const overwrite = copy_option::overwrite_if_exists;
        std::string const expected = "FileExistsError [@/" + utf8(name) + "]";
        EXPECT_EQ(outcome(scratch, [&] { copy_file(file, scratch / name, overwrite); }), expected);
        EXPECT_EQ(outcome(scratch, [&] { copy(file, scratch / name, overwrite); }), expected);
        copy_file(scratch / name, file, copy_option::update_existing);  // as new as itself
        EXPECT_EQ(scratch.content(u"f"), "precious");
    }
}

TEST(CopyFile, CopiesBytesAndPermissions) {
    scratch_dir const scratch;
    std::string content;
    for (unsigned i = 0; i < 300'000; ++i) content += static_cast<char>(i * i >> 3);
    for (std::string const& bytes : {std::string(), std::string("x"), content}) {
        std::u16string const file = scratch.file(u"f", bytes);
        scratch_dir::must(::chmod(utf8(file).c_str(), 0640) == 0);
        copy_file(file, scratch / u"\u6F22");
        EXPECT_EQ(scratch.content(u"\u6F22"), bytes);
        EXPECT_EQ(mode_of(scratch / u"\u6F22"), S_IFREG | 0640u);
        copy_file(scratch / u"//f", scratch / u"\u6F22", copy_option::overwrite_if_exists);
        remove(scratch / u"f");
        remove(scratch / u"\u6F22");
    }
    std::u16string const sparse = scratch.file(u"sparse");
    off_t const size = 64 << 20;
    scratch_dir::must(::truncate(utf8(sparse).c_str(), size) == 0);
    copy_file(sparse, scratch / u"copy");
    EXPECT_EQ(status(scratch / u"copy").size, static_cast<std::uint64_t>(size));
}

TEST(Copy, CopiesATreeAsDiffSees) {
    scratch_dir const scratch;
    std::u16string dir = u"tree";
    for (int level = 0; level < 6; ++level, dir += u"/\u00E9t\u00E9") {
        scratch.directory(dir);
        scratch.file(dir + u"/\U0001F600", std::string(1000u * unsigned(level), 'x'));
        scratch.link(dir + u"/link", "no/where");
        scratch.directory(dir + u"/empty");
    }
    auto const options = copy_option::recursive | copy_option::copy_symlinks;
    copy(scratch / u"tree", scratch / u"new/copy", options);  // makes "new" as well
    std::string const diff =
        "diff -r --no-dereference " + utf8(scratch / u"tree") + ' ' + utf8(scratch / u"new/copy");
    EXPECT_EQ(std::system(diff.c_str()), 0);
    copy(scratch / u"tree", scratch / u"shallow", copy_option::none);
    EXPECT_EQ(mode_of(scratch / u"shallow/link"), 0u);
}

TEST(CopyDirectory, GivesThePermissionsOfTheSource) {
    scratch_dir const scratch;
    std::u16string const from = scratch.directory(u"d", 0750), file = scratch.file(u"f");
    copy_directory(from, scratch / u"made");
    copy_directory(upath(from), upath(scratch / u"made"));  // exists: stays
    EXPECT_EQ(mode_of(scratch / u"made"), S_IFDIR | 0750u);
    struct {
        std::u16string from, to;
        std::string outcome;
    } const rows[] = {
        {u"missing", u"x", "PathNotFound [@/missing]"},
        {u"d", u"no/x", "PathNotFound [@/no/x]"},
        {u"d", u"f", "FileExistsError [@/f]"},
        {u"f", u"x", "NotDirectoryError [@/f] "},
    };
    for (auto const& row : rows) {
        std::string const result =
            outcome(scratch, [&] { copy_directory(scratch / row.from, scratch / row.to); });
        EXPECT_EQ((result + ' ').substr(0, row.outcome.size()), row.outcome);
    }
}

TEST(CopySymlink, CopiesTheTextAsItIs) {
    scratch_dir const scratch;
    testing::environment_guard const home("HOME", utf8(scratch / u"").c_str());
    scratch.link(u"l", "~/x//y");
    scratch.link(u"bad", "\xFF");
    scratch.file(u"f");
    copy_symlink(scratch / u"l", scratch / u"copy");
    EXPECT_EQ(read_symlink(scratch / u"copy"), u"~/x//y");
    struct {
        std::u16string from, to;
        std::string outcome;
    } const rows[] = {
        {scratch / u"missing", scratch / u"x", "PathNotFound"},
        {scratch / u"f", scratch / u"x",
         "InvalidArgument \"Non-symbolic link file is not permitted\""},
        {scratch / u"bad", scratch / u"x",
         "InvalidArgument \"Target of the symbolic link does not exist\""},
        {scratch / u"l", scratch / u"f", "FileExistsError"},
        {scratch / u"l", scratch / u"l", "FileExistsError [~/x//y]"},
        {u"~/l", scratch / u"x", "PathNotFound"},  // no native form, so no expansion
    };
    for (auto const& row : rows)
        EXPECT_EQ(outcome(scratch, [&] { copy_symlink(row.from, row.to); }), row.outcome);
    copy_symlink(upath(u"~/l"), upath(u"~/expanded"));
    EXPECT_EQ(read_symlink(scratch / u"expanded"), u"~/x//y");
}

class CopyIntoItself : public ::testing::Test {
protected:
    CopyIntoItself() {
        scratch.directory(u"d");
        scratch.directory(u"d/sub");
        scratch.file(u"d/f");
        scratch.link(u"to d", "d");
        scratch.link(u"to sub", "d/sub");
        scratch_dir::must(::chdir(utf8(scratch / u"").c_str()) == 0);
    }
    ~CopyIntoItself() override { static_cast<void>(::chdir(before_.c_str())); }

    scratch_dir scratch;

private:
    std::string before_ = std::filesystem::current_path();
};

TEST_F(CopyIntoItself, EndsAtOnce) {
    auto const merge = copy_option::recursive | copy_option::overwrite_if_exists;
    struct {
        std::u16string from, to;
        bool refused;
    } const rows[] = {
        {u"d", u"d", true},
        {u"d", u"d/sub", true},
        {u"d", u"d/x/y", true},
        {u"d", u"to sub", true},
        {u"d", u"to sub/x", true},
        {u"to d/.", u"d/x", true},
        {u"d", u"x/../d/y", true},
        {u"d", u"x/../to d/y", true},
        {u"d/sub", u"d/sub/../sub/x", true},
        {u"d", u"d/x/../../d/y", true},
        {scratch / u"d", u"./d/x", true},
        {u"d", u"d/../e", false},
        {u"d/sub", u"d/e", false},
        {u"d", u"dd", false},
        {u"d", u"x/y/../../e2", false},
    };
    for (auto const& row : rows) {
        std::string const result = outcome(scratch, [&] { copy(row.from, row.to, merge); });
        EXPECT_EQ(result.substr(0, 18), row.refused ? "InvalidArgument \"\"" : "ok")
            << utf8(row.to);
        std::filesystem::recursive_directory_iterator const entries("d");
        EXPECT_TRUE(!row.refused || std::distance(begin(entries), end(entries)) == 2)
            << "something was made for " << utf8(row.to);
    }
    EXPECT_EQ(outcome(scratch, [&] { copy(scratch / u"d", scratch / u"d/x", merge); }),
              "InvalidArgument \"\" [@/d] [@/d/x]");
    EXPECT_EQ(outcome(scratch, [&] { copy(u"d", u"d/sub", copy_option::recursive); }),
              "FileExistsError [d/sub]");
}

TEST_F(CopyIntoItself, ThroughALinkEndsWithThatLink) {
    scratch.link(u"d/sub/back", utf8(scratch / u"d"));
    EXPECT_EQ(
        outcome(scratch, [&] { copy(scratch / u"d", scratch / u"x", copy_option::recursive); }),
        "SystemError [@/d/sub/back] ELOOP");
    scratch.link(u"d/out", utf8(scratch / u"elsewhere"));
    scratch.directory(u"elsewhere");
    remove(scratch / u"d/sub/back");
    EXPECT_EQ(
        outcome(scratch,
                [&] { copy(scratch / u"d", scratch / u"elsewhere/x", copy_option::recursive); }),
        "InvalidArgument \"\" [@/elsewhere] [@/elsewhere/x/out]");
}

TEST_F(CopyIntoItself, LooksUpRelativeTargetsFromTheWorkingDirectory) {
    scratch.link(u"d/sub/link", "f");  // names nothing here, though d/sub/../f would
    EXPECT_EQ(outcome(scratch, [&] { copy(scratch / u"d/sub/link", scratch / u"x"); }),
              "PathNotFound [@/d/sub/link]");
    scratch.file(u"f", "of the working directory");
    copy(scratch / u"d/sub/link", scratch / u"x");
    EXPECT_EQ(scratch.content(u"x"), "of the working directory");
}

TEST(Copy, EndsAtNamesThatItCannotTell) {
    scratch_dir const scratch;
    testing::environment_guard const home("HOME", "/h");
    scratch.directory(u"a");
    scratch.file(u"a/~");
    scratch.directory(u"b");
    scratch_dir::must(::mkdir((utf8(scratch / u"b/") + "\xFF").c_str(), 0755) == 0);
    EXPECT_EQ(
        outcome(scratch, [&] { copy(scratch / u"a", scratch / u"x", copy_option::recursive); }),
        "InvalidArgument \"Absolute path not permitted\"");
    EXPECT_EQ(
        outcome(scratch, [&] { copy(scratch / u"b", scratch / u"y", copy_option::recursive); }),
        "InvalidArgument \"Empty Path not permitted\"");
}

}  // namespace
}  // namespace ko::filesystem

// Every operation but copies and listings, on real files. Each test runs with texts and with paths.

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <sstream>
#include <string>
#include <type_traits>

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/posix_time_duration.hpp>

#include <ko/filesystem.hpp>

#include "support/files.hpp"
#include "support/outcome.hpp"

namespace ko::filesystem {
namespace {

using testing::as_unprivileged_child;
using testing::environment_guard;
using testing::row;
using testing::scratch_dir;
using testing::utf16;
using testing::utf8;
constexpr auto must = &scratch_dir::must;

std::u16string const lone = std::u16string(u"x") + char16_t{0xD800};
std::u16string const zero = std::u16string(u"d\0x", 3);
std::string const nothing = "ffff0000 0 no time";  // the type is file_not_found
std::string const no_path = "InvalidArgument \"Empty Path not permitted\"";

/// `f` "content", `\u6F22`, `secret` 0000, `d` with `d/f` in it, `empty`, `closed` 0000, the links
/// `l` to d, `dangling` and `loop`, and `fifo`.
template <class Path>
class Operations : public testing::table_test<Path> {
protected:
    Operations() {
        for (char16_t const* const name : {u"d", u"empty", u"closed"})
            this->scratch.directory(name);
        for (char16_t const* const name : {u"\u6F22", u"secret", u"d/f"}) this->scratch.file(name);
        this->scratch.file(u"f", "content");
        this->scratch.link(u"l", "d");
        this->scratch.link(u"dangling", "x");
        this->scratch.link(u"loop", "loop");
        must(::mkfifo("fifo", 0600) == 0);
        must(::chmod("secret", 0) == 0 && ::chmod("closed", 0) == 0);
    }
    ~Operations() override {
        ::umask(umask_);
        ::chmod((this->scratch.path8() + "/closed").c_str(), 0755);  // else only root can remove it
    }

private:
    mode_t umask_ = ::umask(022);
};

using path_types = ::testing::Types<std::u16string, upath>;
struct path_names {
    template <class Path>
    static std::string GetName(int) {
        return std::is_same_v<Path, upath> ? "path" : "text";
    }
};
TYPED_TEST_SUITE(Operations, path_types, path_names);

/// The type as ls(1) has it and the permissions, as lstat says; for a link "l".
std::string mode(char const* path) {
    struct stat found {};
    if (::lstat(path, &found) != 0) return "nothing";
    if (S_ISLNK(found.st_mode)) return "l";
    std::ostringstream out;
    out << (S_ISDIR(found.st_mode) ? 'd' : '-') << std::oct << (found.st_mode & 07777);
    return out.str();
}

/// Type and size, and "no time" if there is none.
template <class Status>
std::string shown(Status const& s) {
    std::ostringstream out;
    out << std::hex << s.type << ' ' << s.size;
    return out.str() + (s.last_write_time.is_special() ? " no time" : "");
}

TYPED_TEST(Operations, StatusFollowsLinksOrNot) {
    auto const all = [](auto const& p) {
        return (exists(p) ? "exists: " : "") + shown(status(p)) + ", " + shown(symlink_status(p)) +
               (is_directory(p) ? " d" : "") + (is_regular_file(p) ? " f" : "") +
               (is_symlink(p) ? " l" : "");
    };
    std::string const directory = shown(status(u"d")), absent = nothing + ", " + nothing;
    this->expect(all, row(u"f//", "exists: 8000 7, 8000 7 f"),
                 row(u"l", "exists: " + directory + ", a000 1 d l"),
                 row(u"\u6F22", "exists: 8000 0, 8000 0 f"), row(u"fifo", "exists: 1000 0, 1000 0"),
                 row(u"/dev/null", "exists: 2000 0, 2000 0"),
                 row(u"dangling", nothing + ", a000 1 l"), row(u"missing", absent),
                 row(u"", absent), row(lone, absent), row(zero, absent));
    this->expect(LIFT(is_symlink), row(u"f/x", "no"), row(u"loop", "yes"));
    must(::chmod("f", 06751) == 0);
    EXPECT_EQ(status(TypeParam(u"f")).permissions, 06751u);
}

using StatusExpressLight = Operations<std::u16string>;

TEST_F(StatusExpressLight, TakesTheTextAsGiven) {
    environment_guard const home("HOME", scratch.path8().c_str());
    expect([](auto const& p) { return shown(status_express_light(p)); }, row(u"l//f", "8000 0"),
           row(u"f/", "NotDirectoryError [f/]"), row(u"~/f", nothing), row(u"", nothing),
           row(zero, nothing));
}

TYPED_TEST(Operations, AttributesAreReadAndSet) {
    TypeParam const f(u"f//"), empty(u"");
    EXPECT_EQ((resize_file(f, 3), this->scratch.content(u"f")), "con");
    EXPECT_EQ((resize_file(f, 5), this->scratch.content(u"f")), std::string("con\0\0", 5));
    TELLS(resize_file(f, ~0ull), "SystemError [f] " + std::to_string(EFBIG));
    TELLS(resize_file(empty, 0), no_path);
    must(::link("f", "hard") == 0);
    this->expect(LIFT(hard_link_count), row(u"f//", "2"), row(u"", no_path));
    this->expect(LIFT(file_size), row(u"f//", "5"), row(u"d", "FileIsDirectory [d]"),
                 row(u"", no_path), row(u"fifo", "InvalidArgument \"\" [fifo]"));
    using boost::posix_time::microseconds;
    boost::posix_time::ptime const epoch(boost::gregorian::date(1970, 1, 1)), none;
    timespec const times[] = {{-1, 999'999'999}, {}};
    must(::utimensat(AT_FDCWD, "f", times, 0) == 0);
    for (std::int64_t const count :
         {0LL, 1LL, -1LL, -999'999LL, -1'000'000LL, -1'000'001LL, 10'413'792'000'123'456LL}) {
        auto const time = epoch + microseconds(count);
        last_write_time(f, time);
        auto const s = status(f);
        EXPECT_TRUE(last_write_time(f) == time && s.last_write_time == time) << count;
        EXPECT_EQ(status_express_light(u"f").last_write_time, time);
        EXPECT_TRUE(s.last_access_time == epoch - microseconds(1) &&
                    s.last_status_change_time > epoch);
    }
    TELLS(last_write_time(TypeParam(lone), none), "InvalidArgument \"Time not valid\"");
    TELLS(last_write_time(empty, none), no_path);
    TELLS(last_write_time(empty).is_special(), no_path);
}

TYPED_TEST(Operations, AccessIsGrantedRefusedOrUnknown) {
    auto const with = [](unsigned mode) { return [=](auto const& p) { return access(p, mode); }; };
    for (unsigned const bad : {0u, 16u, ~0u})
        this->expect(with(bad), row(u"f", "InvalidArgument \"Unsupported Access Mode\""),
                     row(u"", no_path));
    this->expect(with(15), row(u"d//", "yes"), row(u"missing", "no"));
    must(::chmod("f", 0444) == 0);
    as_unprivileged_child([&] {  // access(2) goes by the real user
        this->expect(with(access_exists), row(u"f//", "yes"),
                     row(u"closed/x", "AccessDenied [closed/x]"));
        this->expect(with(access_read), row(u"secret", "no"), row(u"closed/x", "no"));
        this->expect(with(access_read | access_exists), row(u"f", "yes"), row(u"secret", "no"));
        this->expect(with(access_read | access_write), row(u"f", "no"));
        this->expect(with(access_execute), row(u"f", "no"), row(u"d", "yes"));
    });
}

TYPED_TEST(Operations, PermissionsAreReplacedAddedOrRemoved) {
    using bits = file_status;
    auto const changed = [](mode_t before, unsigned perms) {
        must(::chmod("f", before) == 0);
        permissions(TypeParam(u"f//"), perms);
        return mode("f");
    };
    EXPECT_EQ(changed(0200, bits::owner_read | bits::perms_add), "-600");
    EXPECT_EQ(changed(0664, bits::group_write | bits::perms_remove), "-644");
    EXPECT_EQ(changed(0644, bits::owner_all) + changed(0644, 0), "-700-0");
    EXPECT_EQ(changed(0644, bits::hidden_file | bits::owner_read), "-400");
    EXPECT_EQ(changed(0644, 0xF000 | 0777 | bits::perms_remove), "-0");
    EXPECT_EQ(changed(0644, bits::set_uid_on_exec | bits::perms_add), "-4644");
    EXPECT_EQ(changed(0644, bits::owner_read | bits::perms_symlink), "-400");
    auto const with = [](unsigned perms) { return [=](auto const& p) { permissions(p, perms); }; };
    this->expect(with(0711), row(u"l", "ok"), row(u"dangling", "PathNotFound [dangling]"));
    EXPECT_EQ(mode("d"), "d711") << "of what the link leads to";
    for (unsigned const bad : {0xFFFFu, bits::perms_add | bits::perms_remove})
        this->expect(with(bad), row(u"f", "InvalidArgument \"File Permission not valid\""),
                     row(u"", no_path));
#ifdef __linux__
    // Linux has no permissions of links; the C library says so.
    std::string const unsupported = "SystemError [l] " + std::to_string(EOPNOTSUPP);
    this->expect(with(0600 | bits::perms_symlink), row(u"l", unsupported));
#endif
}

TYPED_TEST(Operations, CurrentPathIsChangedAndRead) {
    this->expect(LIFT(change_current_path), row(u"f//", "NotDirectoryError [f]"), row(u"l", "yes"),
                 row(u"", "no"));
    TELLS(get_current_path(), "@/d");
    change_current_path(TypeParam(u".."));
    TELLS(detail::get_cwd_mt(), this->scratch.path8());
    TELLS(detail::set_cwd_mt(utf8(zero)), "InvalidArgument \"\" [d\\0x]");
    for (int level = 0; level < 12; ++level) {  // longer than PATH_MAX on macOS
        TypeParam const name(std::u16string(200, static_cast<char16_t>('a' + level)));
        create_directory(name);
        change_current_path(name);
    }
    EXPECT_EQ(get_current_path().size(), this->scratch.path8().size() + 12 * 201);
}

TYPED_TEST(Operations, CurrentPathIsEmptyUnlessUtf8) {
    must(::mkdir("bad\xFF", 0755) == 0 && ::chdir("bad\xFF") == 0);
    TELLS(get_current_path(), "");
    this->expect(LIFT(absolute), row(u"x", ""));
    this->expect(LIFT(canonical), row(u".", ""));
    this->expect(LIFT(weakly_canonical), row(u"./missing", ""));
    must(::rmdir("../bad\xFF") == 0);
    TELLS(get_current_path(), "PathNotFound");
}

TYPED_TEST(Operations, CreateDirectoryAppliesTheUmask) {
    ::umask(002);
    this->expect(LIFT(create_directory), row(u"\u00E9//", "ok"), row(u"d//", "FileExistsError [d]"),
                 row(u"///", "FileExistsError [/]"), row(u"", "PathNotFound"));
    EXPECT_EQ(mode("\u00E9"), "d775");
    ::umask(027);
    this->expect(LIFT(create_directories), row(u"d//y/z", "ok"), row(u"d//", "FileExistsError [d]"),
                 row(u"/", "FileExistsError [/]"), row(u"", no_path), row(lone, "PathNotFound"));
    this->expect(LIFT(ensure_directories), row(u"e//y/z", "yes"), row(u"e/y/z", "no"),
                 row(u"l", "no"), row(u"/", "no"), row(u".", "no"), row(u"", no_path),
                 row(u"dangling", "FileExistsError [dangling]"),
                 row(u"f//b/c", "NotDirectoryError [f/b]"));
    EXPECT_EQ(mode("d/y") + mode("d/y/z") + mode("e/y/z"), "d750d750d750");
}

TYPED_TEST(Operations, LinksAreCreatedAndRead) {
    environment_guard const home("HOME", "/h");
    std::string const bad_type = "InvalidArgument \"Unsupported file type\"";
    auto const as = [](unsigned type) {
        return [=](auto const& target, auto const& link) { create_symlink(target, link, type); };
    };
    this->expect(LIFT(create_symlink), row(u"\u6F22//x", u"a//", "ok"),
                 row(u"t", u"f", "FileExistsError"), row(u"t", u"dangling", "FileExistsError [t]"));
    this->expect(as(file_status::regular_file), row(u"..", u"b", "ok"));
    this->expect(as(file_status::directory_file), row(u"~/x", u"c", "ok"));
    this->expect(as(file_status::symlink_file), row(u"t", u"n", bad_type));
    this->expect(as(0), row(u"t", u"n", bad_type), row(u"", u"n", no_path),
                 row(u"t", u"", no_path));
    this->expect(LIFT(create_hard_link), row(u"f//", u"h//", "ok"), row(u"dangling", u"hl", "ok"),
                 row(u"", u"n", no_path), row(u"f", u"", no_path),
                 row(u"f", u"l", "FileExistsError"));
    EXPECT_EQ(this->scratch.content(u"h") + mode("hl"), "contentl");
    this->scratch.link(u"bad", "x\xFF");
    this->scratch.link(u"tilde", "~//x");
    bool const is_text = std::is_same_v<TypeParam, std::u16string>;
    this->expect(LIFT(read_symlink), row(u"a//", "\u6F22/x"), row(u"b", ".."), row(u"c", "/h/x"),
                 row(u"tilde", is_text ? "~//x" : "/h/x"), row(u"bad", ""), row(u"", ""),
                 row(u"\u6F22", "InvalidArgument \"\" [\u6F22]"));
    for (std::size_t const size : {1023u, 1024u, 3000u}) {
        std::string const text(size, 'x'), name = "long" + std::to_string(size);
        this->scratch.link(utf16(name), text);
        this->expect(LIFT(read_symlink), row(utf16(name), text));
    }
}

TYPED_TEST(Operations, RemoveChecksTheKindOfEntry) {
    auto const dir = [](auto const& p) { remove(p, file_status::directory_file); };
    auto const file = [](auto const& p) { remove(p, file_status::regular_file); };
    this->expect(LIFT(remove), row(u"d", "DirectoryNotEmpty [d]"), row(u"missing", "PathNotFound"),
                 row(u"", "ok"));
    this->expect(dir, row(u"f//", "NotDirectoryError [f]"), row(u"", "ok"));
    this->expect(file, row(u"d", "FileIsDirectory [d]"), row(u"", "ok"));
    this->expect(LIFT(remove_file), row(u"d", "FileIsDirectory [d]"),
                 row(u"missing", "PathNotFound [missing]"), row(u"", "ok"));
    this->expect(LIFT(remove_directory), row(u"d//", "DirectoryNotEmpty [d]"),
                 row(u"l//", "NotDirectoryError [l]"), row(u"", "ok"));
    this->expect(LIFT(remove_all), row(u"missing", "PathNotFound"),
                 row(zero, "InvalidArgument \"\" [d\\0x]"), row(u"", "ok"));
    this->expect(LIFT(remove_if_exists), row(u"f/x", "NotDirectoryError [f/x]"),
                 row(u"\u6F22//", "yes"), row(u"\u6F22", "no"), row(u"", "no"));
    this->expect(LIFT(remove), row(u"f//", "ok"), row(u"empty", "ok"), row(u"dangling", "ok"),
                 row(u"fifo", "ok"));
    this->expect(LIFT(remove_symlink), row(u"loop//", "ok"), row(u"", "ok"));
    this->expect(LIFT(remove_file), row(u"l//", "ok"));
    this->expect(file, row(u"secret//", "ok"));
    this->expect(dir, row(u"closed", "ok"));
    for (auto const* const gone :
         {"f", "empty", "dangling", "fifo", "loop", "l", "\u6F22", "secret", "closed"})
        EXPECT_EQ(mode(gone), "nothing");
    EXPECT_EQ(mode("d/f"), "-644");
}

TYPED_TEST(Operations, RemoveAllRemovesATreeAndNothingElse) {
    std::u16string dir = u"tree";
    for (int level = 0; level < 30; ++level, dir += u"/d\u00E9") {
        this->scratch.directory(dir);
        this->scratch.directory(dir + u"/.hidden");
        this->scratch.file(dir + u"/..more");
        this->scratch.link(dir + u"/out", this->scratch.path8() + "/d");
        this->scratch.link(dir + u"/up", "..");
    }
    must(::mkdir("tree/bad\xFF", 0755) == 0);
    this->expect(LIFT(remove_all), row(u"tree//", "ok"), row(u"l//", "ok"), row(u"f//", "ok"));
    EXPECT_EQ(mode("tree") + mode("l") + mode("d/f"), "nothingnothing-644");
}

TYPED_TEST(Operations, RenameReportsTheSourceOrTheTarget) {
    this->expect(LIFT(rename), row(u"missing", u"x", "PathNotFound [missing]"),
                 row(u"f", u"no/x", "PathNotFound [no/x]"), row(u"", u"x", no_path),
                 row(u"x", u"", no_path), row(u"d", u"d/x", "InvalidArgument \"\" [d] [d/x]"));
    must(::chmod("empty", 0777) == 0 && ::chmod("d", 0555) == 0);
    as_unprivileged_child([&] {
        this->expect(LIFT(rename),
                     row(utf16(this->scratch.path8()) + u"/f", u"empty/g", "AccessDenied [@/f]"),
                     row(u"f", u"empty/g", no_path));
        must(::mkdir("empty/m", 0755) == 0);
        this->expect(LIFT(rename), row(u"empty/m", u"d/m", "AccessDenied [d/m]"));
    });
    must(::chmod("d", 0755) == 0);
    this->expect(LIFT(rename), row(u"f//", u"\u6F22//", "ok"), row(u"d", u"e", "ok"));
    EXPECT_EQ(this->scratch.content(u"\u6F22"), "content");
    EXPECT_EQ(mode("f") + mode("d") + mode("e/f"), "nothingnothing-644");
}

template <class Path>
class RenameAcrossFileSystems : public Operations<Path> {
protected:
    void SetUp() override {
        // Not every machine has a second file system that this user may write to.
        if (place_.empty()) GTEST_SKIP() << "there is no second file system to move to";
    }
    std::string move(std::u16string const& from, std::u16string const& to,
                     bool keep_time = false) const {
        rename_options options;
        options.preserve_last_write_time = keep_time ? 1 : 0;
        return testing::outcome(other.path8(), [&] { rename(Path(from), Path(to), options); });
    }

    std::string const place_ = testing::directory_on_another_file_system();
    scratch_dir const other{place_.empty() ? "." : place_};
};
TYPED_TEST_SUITE(RenameAcrossFileSystems, path_types, path_names);

TYPED_TEST(RenameAcrossFileSystems, MovesFilesAndTrees) {
    scratch_dir const& there = this->other;
    timespec const in_2001[] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    auto const is_old = [&](std::u16string const& name) {
        return status(there / name).last_write_time.date().year() == 2001;
    };
    for (bool const keep : {false, true}) {
        this->scratch.directory(u"t");
        this->scratch.file(u"t/\u00E9", "deep");
        this->scratch.link(u"t/l", "\u00E9");
        this->scratch.file(u"g", "flat");
        for (char const* const name : {"t/\u00E9", "t", "g"})
            must(::utimensat(AT_FDCWD, name, in_2001, 0) == 0);
        EXPECT_EQ(this->move(u"t", there / u"t", keep) + this->move(u"g", there / u"g", keep),
                  "okok");
        EXPECT_EQ(mode("t") + mode("g"), "nothingnothing");
        EXPECT_EQ(there.content(u"t/\u00E9") + there.content(u"t/l") + there.content(u"g"),
                  "deepdeepflat");
        EXPECT_TRUE(is_old(u"t/\u00E9") == keep && is_old(u"g") == keep && !is_old(u"t"));
        remove_all(there / u"t");
        remove(there / u"g");
    }
    if (::getuid() != 0) return;  // only root can give files away
    for (char const* const name : {"f", "d/f"})
        must(::chown(name, 1000, 1000) == 0 && ::chmod(name, 06755) == 0);
    EXPECT_EQ(this->move(u"f", there / u"f") + this->move(u"d", there / u"d"), "okok");
    for (char16_t const* const name : {u"f", u"d/f"})
        EXPECT_EQ(status(there / name).permissions, 0755u);
}

TYPED_TEST(RenameAcrossFileSystems, RejectsExistingTargetsAndItself) {
    scratch_dir const& there = this->other;
    there.file(u"f", "old");
    there.directory(u"d");
    there.file(u"d/f", "old");
    for (std::u16string const name : {u"f", u"d"})
        EXPECT_EQ(this->move(name, there / name), "FileExistsError [@/" + utf8(name) + "]");
    EXPECT_EQ(there.content(u"f") + there.content(u"d/f") + this->scratch.content(u"f"),
              "oldoldcontent");
    // Below the source, by a link at the target or in it.
    this->scratch.directory(u"d/e");
    there.link(u"in", this->scratch.path8() + "/d/e");
    there.directory(u"u");
    there.link(u"u/e", this->scratch.path8() + "/d");
    for (std::u16string const name : {u"in", u"in/x", u"u"})
        EXPECT_EQ(this->move(u"d", there / name),
                  "InvalidArgument \"\" [d] [@/" + utf8(name) + "]");
    EXPECT_EQ(mode("d/f") + mode("d/e/x"), "-644nothing");
}

TYPED_TEST(RenameAcrossFileSystems, ReportsTimesItCannotPreserve) {
    // The real path of a link that leaves the tree leads to no copy.
    this->scratch.link(u"empty/out", this->scratch.path8() + "/secret");
    EXPECT_EQ(this->move(u"empty", this->other / u"e", true).substr(0, 5), "std: ");
    EXPECT_EQ(mode("empty/out"), "l");
    // A time beyond a clock of nanoseconds is kept, unless the file system can't.
    timespec const in_1600[] = {{-11'676'096'000, 0}, {-11'676'096'000, 0}};
    std::u16string const old = this->other.file(u"old");
    must(::utimensat(AT_FDCWD, utf8(old).c_str(), in_1600, 0) == 0);
    auto const time = status(old).last_write_time;
    if (this->move(old, u"old", true) == "ok")
        EXPECT_EQ(status(u"old").last_write_time, time);
    else
        EXPECT_EQ(mode(utf8(old).c_str()), "-644");
}

TYPED_TEST(Operations, ResolveMakesPathsAbsoluteAndCanonical) {
    environment_guard const home("HOME", this->scratch.path8().c_str());
    std::string const bad_base = "InvalidArgument \"Invalid Base Path\"";
    std::u16string const root = utf16(this->scratch.path8());
    this->expect(LIFT(absolute), row(u"b", "@/b"), row(u"b", u"/a//", "/a/b"),
                 row(u"b", u"/", "/b"), row(u"/x", u"rel", "/x"),
                 row(u"a/../b", u"/x", "/x/a/../b"), row(u"~/b", u"/a", "@/b"),
                 row(u"", u"rel", ""), row(u"b", u"rel", bad_base));
    this->expect(LIFT(canonical), row(u"l/f", "@/d/f"), row(root + u"//l/../d/.", "@/d"),
                 row(u"/", "/"), row(u"missing", "PathNotFound"), row(lone, "PathNotFound"),
                 row(u"dangling", "PathNotFound"), row(u"f/x", "PathNotFound"),
                 row(u"f", u"~/l/", "@/d/f"), row(u"", u"rel", ""), row(u"b", u"rel", bad_base),
                 row(u"f", u"/missing", "PathNotFound"), row(u"f", u"/" + lone, "PathNotFound"));
    this->expect(LIFT(weakly_canonical), row(u"l//f", "@/d/f"), row(root + u"/l/no/../x", "@/d/x"),
                 row(u"l/no/./y", "@/d/no/y"), row(u"l/no/.", "@/d/no/."), row(u"l/no/..", "@/d"),
                 row(u"l/\u6F22/x", "@/d/\u6F22/x"), row(u"f/x", "@/f/x"),
                 row(u"dangling/x", "dangling/x"), row(u"no/../a", "a"),
                 row(u"/no//such", "/no/such"), row(u"", ""),
                 row(u"d/~/x", "InvalidArgument \"Absolute path not permitted\""),
                 row(zero, "InvalidArgument \"\" [d\\0x]"));
    this->expect(LIFT(relative), row(u"l/f", "d/f"), row(u"/a/b/c", u"/a", "b/c"),
                 row(u"/a", u"/a/b", ".."), row(u"/a", u"/a", "."), row(u"l/f", u"empty", "../d/f"),
                 row(u"no", u"d", ""));
    // A path object may hold a tilde as a name; only canonical paths expand it all the same.
    upath const tilde(u"~/l", false);
    EXPECT_EQ(absolute(tilde, upath(u"/a")), u"/a/~/l");
    EXPECT_EQ(canonical(tilde), root + u"/d");
    EXPECT_TRUE(absolute(tilde).expand_tilde() && weakly_canonical(upath()).expand_tilde());
}

TYPED_TEST(Operations, EquivalentComparesFiles) {
    environment_guard const home("HOME", this->scratch.path8().c_str());
    must(::link("d/f", "hard") == 0);
    bool const is_text = std::is_same_v<TypeParam, std::u16string>;
    this->expect(LIFT(equivalent), row(u"d/f", u"hard", "yes"), row(u"l", u"d", "yes"),
                 row(u"d", u"d/f", "no"), row(u"~/d", u"d", is_text ? "no" : "yes"),
                 row(u"d", u"", "no"), row(u"", u"d", "no"), row(u"d", lone, "no"),
                 row(lone, u"d", "no"), row(u"d", u"missing", "no"), row(u"missing", u"d", "no"),
                 row(u"", u"", no_path), row(lone, lone, "PathNotFound"),
                 row(u"m\u6F22", u"m", "PathNotFound [m\"]"));
}

using Space = Operations<upath>;

TEST_F(Space, IsCountedInBytes) {
    space_info const info = space(upath(u"l/f"));
    EXPECT_TRUE(info.available <= info.free && info.free <= info.capacity && info.capacity > 0);
    auto const capacity = [](upath const& p) { return space(p).capacity; };
    // What comes from Boost has the low bytes of the path: of U+6F22 a quote.
    expect(capacity, row(u"", no_path), row(u"m\u00E9\u6F22", "PathNotFound [m\uFFFD\"]"));
}

TYPED_TEST(Operations, UncPathsAndShortcutsAreStubs) {
    environment_guard const home("HOME", "/h");
    bool const is_text = std::is_same_v<TypeParam, std::u16string>;
    this->expect([](auto const& p) { return get_unc_path(p, false); },
                 row(u"~//\u00E9/", is_text ? "~//\u00E9/" : "/h/\u00E9"),
                 row(std::u16string(1, char16_t{0xDC00}) + u"x", "\uFFFDx"), row(lone, ""));
    this->expect(LIFT(create_shortcut), row(u"d", u"s", "InvalidOperation"));
    EXPECT_EQ(mode("s"), "nothing");
}

}  // namespace
}  // namespace ko::filesystem

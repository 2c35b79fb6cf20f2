// Every operation but the copies on real files, told line by line: what is called, and what comes
// of it. Each test runs twice, with texts and with path objects.

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <sstream>
#include <string>

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/posix_time_duration.hpp>

#include <ko/filesystem.hpp>

#include "support/files.hpp"
#include "support/outcome.hpp"

namespace ko::filesystem {
namespace {

using testing::environment_guard;
using testing::scratch_dir;
using testing::utf16;
using testing::utf8;

/// `f` "content", `\u6F22`, `secret` 0000, `d` with `d/f` in it, `empty`, `closed` 0000, the links
/// `l` to d, `dangling` and `loop`, and `fifo`.
template <class Path>
class Operations : public testing::scratch_test {
protected:
    Operations() {
        scratch.file(u"f", "content");
        scratch.file(u"\u6F22");
        chmod(u"secret", 0, scratch.file(u"secret"));
        scratch.directory(u"d");
        scratch.file(u"d/f");
        scratch.directory(u"empty");
        scratch.directory(u"closed", 0);
        scratch.link(u"l", "d");
        scratch.link(u"dangling", "x");
        scratch.link(u"loop", "loop");
        scratch_dir::must(::mkfifo("fifo", 0600) == 0);
    }
    ~Operations() override {
        ::umask(umask_);
        if (exists(scratch / u"closed")) chmod(u"closed", 0755);  // else only root could remove it
    }

    Path at(std::u16string const& name) const { return Path(scratch / name); }

    void chmod(std::u16string const& name, mode_t mode, std::u16string const& = {}) const {
        scratch_dir::must(::chmod(utf8(scratch / name).c_str(), mode) == 0);
    }

    /// What lstat says: "-" and other letters as ls(1) has them, then the permissions.
    std::string mode(char16_t const* name) const {
        struct stat found {};
        if (::lstat(utf8(scratch / name).c_str(), &found) != 0) return "nothing";
        std::ostringstream out;
        out << (S_ISDIR(found.st_mode)   ? 'd'
                : S_ISLNK(found.st_mode) ? 'l'
                                         : '-')
            << std::oct << (found.st_mode & 07777);
        return S_ISLNK(found.st_mode) ? "l" : out.str();
    }

    std::u16string const lone = std::u16string(u"x") + char16_t{0xD800};
    std::u16string const long_name = std::u16string(300, u'n');
    std::string const no_path = "InvalidArgument \"Empty Path not permitted\"";

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

std::string type(file_status const& s) {
    if (s.type != file_status::file_not_found) {
        std::ostringstream out;
        out << std::hex << s.type << ' ' << s.size;
        return out.str();
    }
    bool const blank =
        s.permissions == 0 && s.size == 0 && s.last_access_time.is_not_a_date_time() &&
        s.last_write_time.is_not_a_date_time() && s.last_status_change_time.is_not_a_date_time();
    return blank ? "nothing" : "not the value for nothing";
}

TYPED_TEST(Operations, TellTheStatus) {
    auto const at = [this](std::u16string const& name) { return this->at(name); };
    ::sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::string("socket").copy(address.sun_path, 6);
    int const descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
    auto* const generic = reinterpret_cast<::sockaddr*>(&address);
    scratch_dir::must(::bind(descriptor, generic, sizeof address) == 0 && ::close(descriptor) == 0);
    struct {
        std::u16string name;
        std::string exists, followed, itself;
    } const rows[] = {
        {u"l", "yes", type(status(at(u"d"))), "a000 1"},
        {u"f", "yes", "8000 7", "8000 7"},
        {u"\u6F22", "yes", "8000 0", "8000 0"},
        {u"fifo", "yes", "1000 0", "1000 0"},
        {u"socket", "yes", "c000 0", "c000 0"},
        {u"l/f", "yes", "8000 0", "8000 0"},
        {u"dangling", "no", "nothing", "a000 1"},
        {u"missing", "no", "nothing", "nothing"},
        {this->lone, "no", "nothing", "nothing"},
        {std::u16string(u"f\0", 2), "no", "nothing", "nothing"},
        {u"f/x", "no", "NotDirectoryError", "NotDirectoryError"},
        {u"loop", "SystemError [@/loop] ELOOP", "SystemError ELOOP", "a000 4"},
        {u"loop/x", "SystemError [@/loop/x] ELOOP", "SystemError ELOOP", "SystemError ELOOP"},
    };
    for (auto const& row : rows) {
        TELLS(exists(at(row.name)), row.exists);
        TELLS(type(status(at(row.name))), row.followed);
        TELLS(type(symlink_status(at(row.name))), row.itself);
        auto const is = [&](char const* wanted, std::string const& found) {
            if (found.rfind("SystemError", 0) == 0) return row.exists;
            return std::string(found.rfind(wanted, 0) == 0 ? "yes" : "no");
        };
        TELLS(is_directory(at(row.name)), is("4000", row.followed));
        TELLS(is_regular_file(at(row.name)), is("8000", row.followed));
        TELLS(is_symlink(at(row.name)), is("a000", row.itself));
    }
    TELLS(is_directory(TypeParam(u"")) || is_symlink(TypeParam(u"")), "no");
    TELLS(exists(TypeParam(u"")), "no");
    TELLS(type(status(TypeParam(u""))), "nothing");
    TELLS(exists(at(this->long_name)), "FileNameTooLarge [@/" + utf8(this->long_name) + "]");
    TELLS(type(status(TypeParam(u"/dev/null"))), "2000 0");
    this->chmod(u"f", 06751);
    EXPECT_EQ(status(at(u"f")).permissions, 06751u);
    testing::as_unprivileged_child([&] {
        TELLS(exists(at(u"closed/x")), "AccessDenied [@/closed/x]");
        TELLS(type(status(at(u"closed/x"))), "AccessDenied");
    });
}

TYPED_TEST(Operations, TellTimes) {
    boost::posix_time::ptime const epoch(boost::gregorian::date(1970, 1, 1));
    for (auto const& [time, microseconds] :
         {std::pair<timespec, std::int64_t>({1, 500'000'000}, 1'500'000),
          {{-1, 999'999'999}, -1},
          {{-86400, 0}, -86'400'000'000},
          {{1'700'000'000, 123'456'789}, 1'700'000'000'123'456}}) {
        timespec const times[] = {time, {0, 0}};
        scratch_dir::must(::utimensat(AT_FDCWD, "f", times, 0) == 0);
        auto const s = status(this->at(u"f"));
        EXPECT_EQ((s.last_access_time - epoch).total_microseconds(), microseconds);
        EXPECT_EQ(s.last_write_time, epoch);
        EXPECT_EQ(status_express_light(u"f").last_write_time, epoch);
        EXPECT_GT(s.last_status_change_time.date().year(), 2000);
    }
}

TYPED_TEST(Operations, TellAndSetAttributes) {
    auto const at = [this](std::u16string const& name) { return this->at(name); };
    boost::posix_time::ptime const epoch(boost::gregorian::date(1970, 1, 1)), none;
    TELLS((resize_file(at(u"f"), 3), this->scratch.content(u"f")), "con");
    TELLS((resize_file(at(u"f"), 5), this->scratch.content(u"f")), std::string("con\0\0", 5));
    scratch_dir::must(::link("f", "hard") == 0);
    EXPECT_TRUE(file_size(at(u"f")) == 5 && hard_link_count(at(u"f")) == 2);
    auto const accessed = status(at(u"f")).last_access_time;
    for (std::int64_t const microseconds :
         {0LL, 1LL, -1LL, -999'999LL, -1'000'000LL, -1'000'001LL, 10'413'792'000'123'456LL}) {
        auto const time = epoch + boost::posix_time::microseconds(microseconds);
        TELLS(last_write_time(at(u"f"), time), "ok");
        EXPECT_EQ(last_write_time(at(u"f")), time) << microseconds;
        EXPECT_EQ(status(at(u"f")).last_access_time, accessed);
    }
    TELLS(last_write_time(at(this->lone), none), "InvalidArgument \"Time not valid\"");
    TELLS(last_write_time(TypeParam(u""), none), this->no_path);
    TELLS(resize_file(at(u"f"), ~0ull), "SystemError [@/f] " + std::to_string(EFBIG));
    TELLS(resize_file(TypeParam(u""), 0), this->no_path);
    TELLS(file_size(at(u"d")) == 0, "FileIsDirectory [@/d]");
    TELLS(file_size(at(u"fifo")) == 0, "InvalidArgument \"\" [@/fifo]");
    TELLS(file_size(TypeParam(u"")) + hard_link_count(TypeParam(u"")) == 0, this->no_path);
}

TYPED_TEST(Operations, TellTheStatusOfATextAsItStands) {
    environment_guard const home("HOME", this->scratch.path8().c_str());
    auto const light = [](std::u16string const& p) {
        file_status_light const found = status_express_light(p);
        file_status s;
        s.type = found.type, s.size = found.size, s.last_write_time = found.last_write_time;
        return type(s);
    };
    TELLS(exists(TypeParam(u"~//f/")), "yes");
    TELLS(light(u"~/f"), "nothing");
    TELLS(light(u"l//f"), "8000 0");
    TELLS(light(u"f/"), "NotDirectoryError [f/]");
    TELLS(light(u""), "nothing");
    TELLS(light(std::u16string(u"f\0", 2)), "nothing");
    TELLS(light(u"loop"), "SystemError [loop] ELOOP");
    environment_guard const unknown("HOME", "/\xFF");
    TELLS(exists(TypeParam(u"~")), "no");  // not a file of that name
}

TYPED_TEST(Operations, AskForAccess) {
    auto const at = [this](std::u16string const& name) { return this->at(name); };
    std::string const bad_mode = "InvalidArgument \"Unsupported Access Mode\"";
    TELLS(access(at(u"missing"), access_exists | access_write), "no");
    TELLS(access(at(std::u16string(u"f\0", 2)), access_exists), "InvalidArgument \"\" [@/f\\0]");
    TELLS(access(TypeParam(u""), 0), this->no_path);
    for (unsigned const mode : {0u, 16u, ~0u}) TELLS(access(at(u"f"), mode), bad_mode);
    this->chmod(u"f", 0444);
    testing::as_unprivileged_child([&] {  // access(2) asks for the real user
        TELLS(access(at(u"f"), access_exists), "yes");
        TELLS(access(at(u"f"), access_read | access_exists), "yes");
        TELLS(access(at(u"f"), access_read | access_write), "no");
        TELLS(access(at(u"f"), access_execute), "no");
        TELLS(access(at(u"d"), access_execute), "yes");
        TELLS(access(at(u"secret"), access_read), "no");
        TELLS(access(at(u"secret"), access_read | access_exists), "no");
        TELLS(access(at(u"closed/x"), access_read), "no");
        TELLS(access(at(u"closed/x"), access_exists), "AccessDenied [@/closed/x]");
    });
}

TYPED_TEST(Operations, ChangePermissions) {
    using constants = file_status;
    for (auto const& [before, perms, after] :
         {std::tuple<mode_t, unsigned, char const*>(
              0200, constants::owner_read | constants::perms_add, "-600"),
          {0664, constants::group_write | constants::perms_remove, "-644"},
          {0644, constants::owner_all, "-700"},
          {0644, 0, "-0"},
          {0644, constants::hidden_file | constants::owner_read, "-400"},
          {0644, 0xF000 | 0777 | constants::perms_remove, "-0"},
          {0644, constants::set_uid_on_exec | constants::perms_add, "-4644"},
          {0644, constants::owner_read | constants::perms_symlink, "-400"}}) {
        this->chmod(u"f", before);
        permissions(this->at(u"f"), perms);
        EXPECT_EQ(this->mode(u"f"), after) << perms;
    }
    permissions(this->at(u"l"), 0711);
    EXPECT_EQ(this->mode(u"d"), "d711") << "the link's target is meant";
    std::string const not_valid = "InvalidArgument \"File Permission not valid\"";
    TELLS(permissions(TypeParam(u""), 0xFFFF), this->no_path);
    TELLS(permissions(this->at(u"f"), 0xFFFF), not_valid);
    TELLS(permissions(this->at(u"f"), constants::perms_add | constants::perms_remove), not_valid);
    TELLS(permissions(this->at(u"dangling"), 0644), "PathNotFound [@/dangling]");
    TELLS(permissions(this->at(u"loop"), 0644), "SystemError ELOOP");
#ifdef __linux__
    // Linux has no permissions of links; the C library says so.
    TELLS(permissions(this->at(u"l"), 0600 | constants::perms_symlink),
          "SystemError [@/l] " + std::to_string(EOPNOTSUPP));
#endif
}

TYPED_TEST(Operations, ChangeTheWorkingDirectory) {
    auto const at = [this](std::u16string const& name) { return this->at(name); };
    TELLS(change_current_path(at(u"l//")), "yes");
    TELLS(get_current_path(), "@/d");
    TELLS(change_current_path(TypeParam(u"..")), "yes");
    TELLS(detail::get_cwd_mt(), this->scratch.path8());
    TELLS(change_current_path(TypeParam(u"")), "no");
    TELLS(detail::set_cwd_mt(std::string("/\0x", 3)), "InvalidArgument \"\" [/\\0x]");
    TELLS(get_current_path(), "@");
    for (int level = 0; level < 12; ++level) {
        std::u16string const name(200, static_cast<char16_t>('a' + level));
        create_directory(TypeParam(name));
        change_current_path(TypeParam(name));
    }
    EXPECT_EQ(get_current_path().size(), this->scratch.path8().size() + 12 * 201);

    std::string const bad = this->scratch.path8() + "/bad\xFF";  // can't be told in UTF-16
    scratch_dir::must(::mkdir(bad.c_str(), 0755) == 0 && ::chdir(bad.c_str()) == 0);
    TELLS(get_current_path(), "");
    TELLS(absolute(TypeParam(u"x")), "");
    TELLS(canonical(TypeParam(u".")), "");
    TELLS(weakly_canonical(TypeParam(u"./missing")), "");
    scratch_dir::must(::rmdir(bad.c_str()) == 0);
    TELLS(get_current_path(), "PathNotFound");
}

TYPED_TEST(Operations, MakeDirectories) {
    auto const at = [this](std::u16string const& name) { return this->at(name); };
    ::umask(002);
    TELLS(create_directory(at(u"\u00E9//")), "ok");
    EXPECT_EQ(this->mode(u"\u00E9"), "d775");
    ::umask(027);
    TELLS(create_directories(at(u"d//y/z")), "ok");
    EXPECT_EQ(this->mode(u"d/y") + this->mode(u"d/y/z"), "d750d750");
    TELLS(create_directory(TypeParam(u"///")), "FileExistsError [/]");
    TELLS(create_directories(TypeParam(u"/")), "FileExistsError [/]");
    TELLS(create_directory(TypeParam(u"")), "PathNotFound");
    TELLS(create_directories(TypeParam(u"")), this->no_path);
    TELLS(create_directory(at(u"d")), "FileExistsError [@/d]");
    TELLS(create_directories(at(u"d")), "FileExistsError [@/d]");
    TELLS(create_directories(at(u"f/b/c")), "NotDirectoryError [@/f/b]");
    TELLS(create_directories(at(this->lone)), "PathNotFound");
    TELLS(create_directories(at(u"n/" + this->long_name + u"/x")),
          "FileNameTooLarge [@/n/" + utf8(this->long_name) + "]");
    EXPECT_EQ(this->mode(u"n"), "d750") << "what was made before stays";
    TELLS(ensure_directories(at(u"e//y/z")), "yes");
    EXPECT_EQ(this->mode(u"e/y/z"), "d750");
    for (TypeParam const& there : {at(u"e/y/z"), at(u"l"), TypeParam(u"/"), TypeParam(u".")})
        TELLS(ensure_directories(there), "no");
    TELLS(ensure_directories(TypeParam(u"")), this->no_path);
    TELLS(ensure_directories(at(u"dangling")), "FileExistsError [@/dangling]");
    TELLS(ensure_directories(at(u"f/b/c")), "NotDirectoryError [@/f/b]");
    testing::as_unprivileged_child(
        [&] { TELLS(ensure_directories(at(u"closed/b/c")), "AccessDenied [@/closed/b]"); });
}

TYPED_TEST(Operations, MakeAndReadLinks) {
    auto const at = [this](std::u16string const& name) { return this->at(name); };
    auto const as = [](std::u16string const& text) { return TypeParam(text); };
    environment_guard const home("HOME", "/h");
    std::string const bad_type = "InvalidArgument \"Unsupported file type\"";
    TELLS(create_symlink(as(u"\u6F22//x"), at(u"a")), "ok");
    TELLS(create_symlink(as(u".."), at(u"b"), file_status::regular_file), "ok");
    TELLS(create_symlink(as(u"~/x"), at(u"c"), file_status::directory_file), "ok");
    TELLS(read_symlink(at(u"a")), "\u6F22/x");
    TELLS(read_symlink(at(u"c/")), "/h/x");
    TELLS(create_symlink(as(u"t"), at(u"n"), 0), bad_type);
    TELLS(create_symlink(as(u"t"), at(u"n"), file_status::symlink_file), bad_type);
    TELLS(create_symlink(as(u""), at(u"n"), 0), this->no_path);
    TELLS(create_symlink(as(u"t"), as(u""), 0), this->no_path);
    TELLS(create_symlink(as(u"t"), at(u"f")), "FileExistsError");
    TELLS(create_symlink(as(u"t"), at(u"dangling")), "FileExistsError [t]");
    TELLS(create_symlink(as(u"t"), at(u"no/n")), "PathNotFound [t]");
    TELLS(create_hard_link(at(u"f"), at(u"h")), "ok");
    TELLS(create_hard_link(at(u"dangling"), at(u"hl")), "ok");
    EXPECT_EQ(this->scratch.content(u"h") + this->mode(u"hl"), "contentl");
    TELLS(create_hard_link(as(u""), at(u"n")), this->no_path);
    TELLS(create_hard_link(at(u"f"), at(u"l")), "FileExistsError");
    for (int const size : {1023, 1024, 3000}) {
        std::string const text(static_cast<std::size_t>(size), 'x');
        this->scratch.link(u"long", text);
        TELLS(read_symlink(at(u"long")), text);
        remove_symlink(at(u"long"));
    }
    this->scratch.link(u"bad", "x\xFF");
    this->scratch.link(u"tilde", "~//x");
    bool const is_text = std::is_same_v<TypeParam, std::u16string>;
    TELLS(read_symlink(at(u"tilde")), is_text ? "~//x" : "/h/x");
    TELLS(read_symlink(at(u"bad")), "");
    TELLS(read_symlink(as(u"")), "");
    TELLS(read_symlink(at(u"\u6F22")), "InvalidArgument \"\" [@/\u6F22]");
}

TYPED_TEST(Operations, RemoveByTheKindOfTheEntry) {
    auto const at = [this](std::u16string const& name) { return this->at(name); };
    std::u16string const zero = u"d" + std::u16string(1, u'\0') + u"x";
    auto const dir = file_status::directory_file, file = file_status::regular_file;
    TELLS(remove(at(u"d")), "DirectoryNotEmpty [@/d]");
    TELLS(remove(at(u"d"), file), "FileIsDirectory [@/d]");
    TELLS(remove_file(at(u"d")), "FileIsDirectory [@/d]");
    TELLS(remove_directory(at(u"d")), "DirectoryNotEmpty [@/d]");
    TELLS(remove_directory(at(u"f")), "NotDirectoryError [@/f]");
    TELLS(remove(at(u"f"), dir), "NotDirectoryError [@/f]");
    TELLS(remove_directory(at(u"l")), "NotDirectoryError [@/l]");
    TELLS(remove(at(u"missing")), "PathNotFound");
    TELLS(remove_all(at(u"missing")), "PathNotFound");
    TELLS(remove_file(at(u"missing")), "PathNotFound [@/missing]");
    TELLS(remove_all(at(zero)), "InvalidArgument \"\" [@/d\\0x]");
    TELLS(remove_if_exists(at(u"f/x")), "NotDirectoryError [@/f/x]");
    for (char16_t const* const gone : {u"f", u"empty", u"dangling", u"fifo", u"loop"}) {
        TELLS(remove(at(gone)), "ok");
        TELLS(remove_if_exists(at(gone)), "no");
        EXPECT_EQ(this->mode(gone), "nothing");
    }
    TELLS(remove_if_exists(at(u"l")) && remove_if_exists(at(u"\u6F22")), "yes");
    TELLS((remove(at(u"secret"), file), remove(at(u"closed"), dir)), "ok");
    TypeParam const none(u"");
    TELLS((remove(none), remove(none, dir), remove_file(none), remove_all(none)), "ok");
    TELLS((remove_directory(none), remove_symlink(none), remove_if_exists(none)), "no");
    EXPECT_EQ(this->mode(u"d/f"), "-644");
}

TYPED_TEST(Operations, RemoveATreeAndNothingElse) {
    std::u16string dir = u"tree";
    for (int level = 0; level < 30; ++level, dir += u"/d\u00E9") {
        this->scratch.directory(dir);
        this->scratch.directory(dir + u"/.hidden");
        this->scratch.file(dir + u"/..more");
        this->scratch.link(dir + u"/out", this->scratch.path8() + "/d");
        this->scratch.link(dir + u"/up", "..");
    }
    scratch_dir::must(::mkdir("tree/bad\xFF", 0755) == 0);
    TELLS(remove_all(this->at(u"tree//")), "ok");
    TELLS(remove_all(this->at(u"l")), "ok");
    EXPECT_EQ(this->mode(u"tree") + this->mode(u"l") + this->mode(u"d/f"), "nothingnothing-644");
    this->chmod(u"d", 0555);
    testing::as_unprivileged_child([&] {
        TELLS(remove_all(this->at(u"d")), "AccessDenied [@/d/f]");
        TELLS(remove_all(this->at(u"closed")), "AccessDenied [@/closed]");
    });
    this->chmod(u"d", 0755);
}

TYPED_TEST(Operations, RenameWithinAFileSystem) {
    auto const at = [this](std::u16string const& name) { return this->at(name); };
    std::string const long_path = "FileNameTooLarge [@/" + utf8(this->long_name) + "]";
    TELLS(rename(at(u"missing"), at(u"x")), "PathNotFound [@/missing]");
    TELLS(rename(at(u"f"), at(u"no/x")), "PathNotFound [@/no/x]");
    TELLS(rename(at(u"f/x"), at(u"x")), "NotDirectoryError [@/x]");
    TELLS(rename(at(u"f"), at(u"d")), "FileIsDirectory [@/d]");
    TELLS(rename(at(u"f"), at(this->long_name)), long_path);
    TELLS(rename(at(this->long_name), at(u"f")), long_path);
    TELLS(rename(at(u"d"), at(u"d/x")), "InvalidArgument \"\" [@/d] [@/d/x]");
    TELLS(rename(at(u"loop/x"), at(u"y")), "SystemError [@/loop/x] ELOOP");
    TELLS(rename(TypeParam(u""), at(u"x")), this->no_path);
    TELLS(rename(at(u"x"), TypeParam(u"")), this->no_path);
    TELLS(rename(at(u"f"), at(std::u16string(u"x\0", 2))), "InvalidArgument \"\" [@/x\\0]");
    this->chmod(u"empty", 0777);
    this->chmod(u"d", 0555);
    this->chmod(u"", 0555);
    testing::as_unprivileged_child([&] {
        TELLS(rename(at(u"f"), at(u"empty/g")), "AccessDenied [@/f]");
        scratch_dir::must(::chdir("empty") == 0 && ::mkdir("m", 0755) == 0);
        TELLS(rename(at(u"empty/m"), at(u"d/m")), "AccessDenied [@/d/m]");
        TELLS(rename(TypeParam(u"m"), at(u"d/m")), this->no_path);  // asks for its directory
    });
    this->chmod(u"", 0755);
    this->chmod(u"d", 0755);
    TELLS(rename(at(u"f"), at(u"\u6F22")), "ok");
    TELLS(rename(at(u"d"), at(u"e")), "ok");
    EXPECT_EQ(this->scratch.content(u"\u6F22"), "content");
    EXPECT_EQ(this->mode(u"f") + this->mode(u"e/f"), "nothing-644");
}

TYPED_TEST(Operations, RenameToAnotherFileSystem) {
    std::string const place = testing::directory_on_another_file_system();
    // Needs a machine with a second file system that this user may write to; not every one has it.
    if (place.empty()) GTEST_SKIP() << "there is no second file system to move to";
    scratch_dir const other(place);
    auto const there = [&](std::u16string const& name) { return TypeParam(other / name); };
    auto const is_old = [&](std::u16string const& name) {
        return status(other / name).last_write_time.date().year() == 2001;
    };
    timespec const in_2001[] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    for (bool const keep : {false, true}) {
        rename_options options;
        options.preserve_last_write_time = keep ? 1 : 0;
        this->scratch.directory(u"t");
        this->scratch.directory(u"t/\u00E9");
        this->scratch.file(u"t/\u00E9/f", "deep");
        this->scratch.link(u"t/l", "\u00E9");
        this->scratch.link(u"t/dangling", "x");
        this->scratch.file(u"g", "flat");
        for (char const* const name : {"t/\u00E9/f", "t/\u00E9", "g"})
            scratch_dir::must(::utimensat(AT_FDCWD, name, in_2001, 0) == 0);
        TELLS(rename(this->at(u"t"), there(u"t"), options), "ok");
        TELLS(rename(this->at(u"g"), there(u"g"), options), "ok");
        EXPECT_EQ(this->mode(u"t") + this->mode(u"g"), "nothingnothing");
        EXPECT_EQ(other.content(u"t/\u00E9/f") + other.content(u"g"), "deepflat");
        TELLS(read_symlink(other / u"t/l") + read_symlink(other / u"t/dangling"), "\u00E9x");
        EXPECT_TRUE(is_old(u"t/\u00E9/f") == keep && is_old(u"g") == keep && !is_old(u"t/\u00E9"));
        remove_all(other / u"t");
        remove(other / u"g");
    }
    other.file(u"f", "old");
    other.directory(u"d");
    other.file(u"d/f", "old");
    EXPECT_EQ(testing::outcome(other.path8(), [&] { rename(this->at(u"f"), there(u"f")); }),
              "FileExistsError [@/f]");
    EXPECT_EQ(testing::outcome(other.path8(), [&] { rename(this->at(u"d"), there(u"d")); }),
              "FileExistsError [@/d]");
    EXPECT_EQ(this->scratch.content(u"f") + other.content(u"f") + other.content(u"d/f"),
              "contentoldold");
    EXPECT_EQ(this->mode(u"d/f"), "-644");
    // A link that leaves the tree: its real path tells where the time goes, and nothing is there.
    this->scratch.link(u"empty/out", this->scratch.path8() + "/secret");
    rename_options options;
    options.preserve_last_write_time = 1;
    EXPECT_THROW(rename(this->at(u"empty"), there(u"e"), options),
                 std::filesystem::filesystem_error);
    EXPECT_EQ(this->mode(u"empty/out"), "l");
    // Below the source, by a link at the target or in it.
    this->scratch.directory(u"d/e");
    other.link(u"in", this->scratch.path8() + "/d/e");
    other.directory(u"u");
    other.link(u"u/e", this->scratch.path8() + "/d");
    for (std::u16string const name : {u"in", u"in/x", u"u"})
        TELLS(rename(this->at(u"d"), there(name)),
              "InvalidArgument \"\" [@/d] [" + utf8(other / name) + "]");
    EXPECT_EQ(this->mode(u"d/f") + this->mode(u"d/e/x"), "-644nothing");
    // A time that a clock of nanoseconds does not have: it is kept, or the file system can't.
    timespec const in_1600[] = {{-11'676'096'000, 0}, {-11'676'096'000, 0}};
    std::u16string const old = other.file(u"old");
    scratch_dir::must(::utimensat(AT_FDCWD, utf8(old).c_str(), in_1600, 0) == 0);
    auto const time = status(old).last_write_time;
    try {
        rename(there(u"old"), this->at(u"old"), options);
        EXPECT_EQ(status(this->scratch / u"old").last_write_time, time);
    } catch (std::filesystem::filesystem_error const& error) {
        EXPECT_EQ(error.code().value(), EOVERFLOW);
    }
    if (::getuid() != 0) return;
    for (char const* const name : {"f", "d/f"})
        scratch_dir::must(::chown(name, 1000, 1000) == 0 && ::chmod(name, 06755) == 0);
    rename(this->at(u"f"), there(u"f1"));
    rename(this->at(u"d"), there(u"d1"));
    EXPECT_EQ(status(other / u"f1").permissions, 0755u);
    EXPECT_EQ(status(other / u"d1/f").permissions, 0755u);
}

TYPED_TEST(Operations, ResolvePaths) {
    auto const as = [](std::u16string const& text) { return TypeParam(text); };
    environment_guard const home("HOME", this->scratch.path8().c_str());
    std::u16string const root = utf16(this->scratch.path8());
    TELLS(absolute(as(u"b"), as(u"/a//")), "/a/b");
    TELLS(absolute(as(u"b"), as(u"/")), "/b");
    TELLS(absolute(as(u"b")), "@/b");
    TELLS(absolute(as(u"/x"), as(u"rel")), "/x");
    TELLS(absolute(as(u"a/../b"), as(u"/x")), "/x/a/../b");
    TELLS(absolute(as(u"~/b"), as(u"/a")), "@/b");
    TELLS(absolute(as(u""), as(u"rel")), "");
    TELLS(absolute(as(u"b"), as(u"rel")), "InvalidArgument \"Invalid Base Path\"");

    TELLS(canonical(as(u"l/f")), "@/d/f");
    TELLS(canonical(as(root + u"//l/../d/.")), "@/d");
    TELLS(canonical(as(u"f"), as(u"~/l/")), "@/d/f");
    TELLS(canonical(as(u"/")), "/");
    TELLS(canonical(as(u""), as(u"rel")), "");
    TELLS(canonical(as(u"b"), as(u"rel")), "InvalidArgument \"Invalid Base Path\"");
    for (std::u16string const& missing : {std::u16string(u"missing"), this->lone}) {
        TELLS(canonical(as(missing)), "PathNotFound");
        TELLS(canonical(as(u"f"), as(u"/" + missing)), "PathNotFound");
    }
    TELLS(canonical(as(u"dangling")), "PathNotFound");
    TELLS(canonical(as(u"f/x")), "PathNotFound");
    TELLS(canonical(as(u"loop")), "SystemError [@/loop] ELOOP");

    TELLS(weakly_canonical(as(u"l/f")), "@/d/f");
    TELLS(weakly_canonical(as(root + u"/l/no/../x")), "@/d/x");
    TELLS(weakly_canonical(as(u"l/no/./y")), "@/d/no/y");
    TELLS(weakly_canonical(as(u"l/no/.")), "@/d/no/.");
    TELLS(weakly_canonical(as(u"l/no/..")), "@/d");
    TELLS(weakly_canonical(as(u"l/\u6F22/x")), "@/d/\u6F22/x");
    TELLS(weakly_canonical(as(u"f/x")), "@/f/x");
    TELLS(weakly_canonical(as(u"dangling/x")), "dangling/x");
    TELLS(weakly_canonical(as(u"no/../a")), "a");
    TELLS(weakly_canonical(as(u"/no/such")), "/no/such");
    TELLS(weakly_canonical(as(u"")), "");
    TELLS(weakly_canonical(as(u"d/~/x")), "InvalidArgument \"Absolute path not permitted\"");
    TELLS(weakly_canonical(as(u"loop/x")), "SystemError [loop/x] ELOOP");
    TELLS(weakly_canonical(as(std::u16string(u"d\0", 2))), "InvalidArgument \"\" [d\\0]");

    TELLS(relative(as(u"/a/b/c"), as(u"/a")), "b/c");
    TELLS(relative(as(u"/a"), as(u"/a/b")), "..");
    TELLS(relative(as(u"/a"), as(u"/a")), ".");
    TELLS(relative(as(u"l/f"), as(u"empty")), "../d/f");
    TELLS(relative(as(u"l/f")), "d/f");
    TELLS(relative(as(u"no"), as(u"d")), "");
    // A path object may hold a tilde as a name; only canonical paths expand it all the same.
    upath const tilde(u"~/l", false);
    TELLS(absolute(tilde, upath(u"/a")), "/a/~/l");
    TELLS(canonical(tilde), "@/d");
    EXPECT_TRUE(absolute(tilde).expand_tilde() && weakly_canonical(upath()).expand_tilde());
}

TYPED_TEST(Operations, CompareFilesAndTellSpace) {
    auto const as = [](std::u16string const& text) { return TypeParam(text); };
    environment_guard const home("HOME", this->scratch.path8().c_str());
    scratch_dir::must(::link("d/f", "hard") == 0);
    bool const is_text = std::is_same_v<TypeParam, std::u16string>;
    TELLS(equivalent(as(u"d/f"), as(u"hard")), "yes");
    TELLS(equivalent(as(u"l"), as(u"d")), "yes");
    TELLS(equivalent(as(u"d"), as(u"d/f")), "no");
    TELLS(equivalent(as(u"~/d"), as(u"d")), is_text ? "no" : "yes");
    for (std::u16string const& other : {std::u16string(), this->lone, std::u16string(u"missing")}) {
        TELLS(equivalent(as(u"d"), as(other)), "no");
        TELLS(equivalent(as(other), as(u"d")), "no");
    }
    TELLS(equivalent(as(u""), as(u"")), this->no_path);
    TELLS(equivalent(as(this->lone), as(this->lone)), "PathNotFound");
    TELLS(equivalent(as(u"m\u6F22"), as(u"m")), "PathNotFound [m\"]");  // the low byte of U+6F22
    TELLS(equivalent(as(u"d"), as(std::u16string(u"d\0", 2))), "InvalidArgument \"\" [d\\0]");

    space_info const info = space(upath(u"l/f"));
    EXPECT_TRUE(info.available <= info.free && info.free <= info.capacity && info.capacity > 0);
    TELLS(space(upath()).free == 0, this->no_path);
    TELLS(space(upath(u"m\u00E9\u6F22")).free == 0, "PathNotFound [m\uFFFD\"]");

    environment_guard const elsewhere("HOME", "/h");
    TELLS(get_unc_path(as(u"~//\u00E9/"), false), is_text ? "~//\u00E9/" : "/h/\u00E9");
    TELLS(get_unc_path(as(std::u16string(1, char16_t{0xDC00}) + u"x"), true), "\uFFFDx");
    TELLS(get_unc_path(as(this->lone), true), "");
    TELLS(create_shortcut(as(u"d"), as(u"s")), "InvalidOperation");
    EXPECT_EQ(this->mode(u"s"), "nothing");
}

}  // namespace
}  // namespace ko::filesystem

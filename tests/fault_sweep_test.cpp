// Every system call of every operation fails once with each error number of the manual pages. The
// result must be the exception for the error number with the path that the rules require, or success
// with the full effect of the operation, or what a row says. No descriptor may be left open, and
// files that are only read must be unchanged.

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <ko/filesystem.hpp>

#include "support/allocations.hpp"
#include "support/files.hpp"
#include "support/outcome.hpp"
#include "support/system_calls.hpp"

namespace ko::filesystem {
namespace {

using test_support::call_recorder;
using calls = std::vector<std::string>;
using numbers = std::set<int>;

/// The error numbers in the manual pages of the calls, and 0 for a listing that just ends.
numbers const all_errors = {
    0,      EACCES, EAGAIN,  EBADF,     EBUSY,     EDQUOT, EEXIST,       EFAULT, EFBIG,   EINTR,
    EINVAL, EIO,    EISDIR,  ELOOP,     EMFILE,    EMLINK, ENAMETOOLONG, ENFILE, ENOENT,  ENOMEM,
    ENOSPC, ENOSYS, ENOTDIR, ENOTEMPTY, EOVERFLOW, EPERM,  ERANGE,       EROFS,  ETXTBSY, EXDEV};

/// The `outcome` of the exception for `error`.
std::string mapped(int error, std::string const& path1, std::string const& path2 = {}) {
    static std::map<int, std::string> const classes = {
        {ENOENT, "PathNotFound"},         {EACCES, "AccessDenied"},
        {EEXIST, "FileExistsError"},      {ENOTDIR, "NotDirectoryError"},
        {EISDIR, "FileIsDirectory"},      {EINVAL, "InvalidArgument \"\""},
        {ENOTEMPTY, "DirectoryNotEmpty"}, {ENAMETOOLONG, "FileNameTooLarge"}};
    auto const known = classes.find(error);
    std::string text = known == classes.end() ? "SystemError" : known->second;
    if (!path1.empty()) text += " [" + path1 + ']';
    if (!path2.empty() && (known == classes.end() || error == EINVAL)) text += " [" + path2 + ']';
    return known == classes.end() ? text + ' ' + test_support::error_name(error) : text;
}

/// Which paths an exception carries.
enum paths : unsigned {
    none = 1,
    own = 2,      ///< those passed to the call
    of_copy = 4,  ///< the source, the target or both, by the rule for copies
    of_move = 8   ///< the same for `rename`
};

/// One operation, and the results of faults in it.
struct scenario {
    template <class Action>
    scenario(char const* operation, unsigned paths_reported, Action action)
        : name(operation), reported(paths_reported), told([action](std::string const& root) {
              return test_support::outcome(root, [&] {
                  test_support::allocation_watch const watch(failing_allocation);
                  return action();
              });
          }) {}

    /// The calls `call` (a name, or a name and a path) result in `outcome` for `errors`, or for all if
    /// empty. "pathless" is the exception without a path, ":" and a path the one with that path; an
    /// asterisk at the end matches anything.
    scenario& but(std::string const& call, numbers const& errors, std::string const& outcome) {
        exemptions.emplace_back(call, errors, outcome);
        return *this;
    }
    scenario& on(std::string const& source, std::string const& target) {
        from = source, to = target;
        return *this;
    }

    static inline int failing_allocation = 0;

    std::string name;
    unsigned reported;
    std::function<std::string(std::string const& root)> told;
    std::string from = "@/f", to = "@/n";
    std::vector<std::tuple<std::string, numbers, std::string>> exemptions;
};

/// Called around each trial of an operation.
struct surroundings {
    std::function<void()> prepare;
    std::function<std::string()> kept;    ///< state that no fault may change
    std::function<std::string()> effect;  ///< state that the operation may change
};

/// The sum of all elements; makes no allocation. After a failure the iterator must be at its end.
template <class Iterator>
std::string listed(Iterator all) {
    std::size_t sum = 0;
    try {
        for (; all != Iterator(); ++all) sum += all->path().native().size();
    } catch (...) {
        if (all == Iterator()) throw;
        return "not at its end";
    }
    return "listed " + std::to_string(sum);
}

bool matches(std::string const& outcome, std::string const& wanted) {
    if (wanted.back() != '*') return outcome == wanted;
    return outcome.rfind(wanted.substr(0, wanted.size() - 1), 0) == 0;
}

/// The files `f`, `g` and `d/s/f`, the link `l` to f, and the empty directory `e`.
class FaultSweep : public test_support::scratch_test {
protected:
    void make_tree() {
        std::filesystem::current_path(scratch.path8());
        for (auto const& entry : std::filesystem::directory_iterator("."))
            std::filesystem::remove_all(entry);
        scratch.file(u"f", "content");
        scratch.file(u"g", "old");
        scratch.directory(u"e");
        scratch.directory(u"d");
        scratch.directory(u"d/s");
        scratch.file(u"d/s/f", "inner");
        scratch.link(u"l", "f");
        scratch.link(u"d/l", "s");
    }

    /// Everything at `path` and below: names, modes and contents.
    static std::string everything_in(std::filesystem::path const& path) {
        namespace fs = std::filesystem;
        auto const s = fs::symlink_status(path);
        if (!fs::exists(s)) return {};
        std::string text = path.filename().string() + ' ';
        text += std::to_string(static_cast<int>(s.permissions())) + ' ';
        std::set<std::string> entries;
        if (fs::is_symlink(s)) entries = {"-> " + fs::read_symlink(path).string()};
        std::ifstream file(path, std::ios::binary);
        if (fs::is_regular_file(s)) entries = {{std::istreambuf_iterator<char>(file), {}}};
        if (fs::is_directory(s))
            for (auto const& entry : fs::directory_iterator(path))
                entries.insert(everything_in(entry));
        for (auto const& entry : entries) text += '{' + entry + '}';
        return text;
    }

    static std::ptrdiff_t open_descriptors() {
        std::filesystem::directory_iterator const descriptors("/proc/self/fd");
        return std::distance(begin(descriptors), end(descriptors));
    }

    /// `call` with the scratch directory written "@".
    std::string shown(std::string const& call) const {
        return std::regex_replace(call, std::regex(scratch.path8()), "@");
    }

    static calls expected(scenario const& s, std::string const& call, int error) {
        if (error == 0) return {"*"};  // not a failure that can be seen
        std::string const name = call.substr(0, call.find(' '));
        for (auto const& [exempt, numbers_meant, outcome] : s.exemptions) {
            bool const named = exempt == call || exempt == name;
            bool const meant = numbers_meant.empty() || numbers_meant.count(error) != 0;
            if (!named || !meant) continue;
            if (outcome == "pathless") return {mapped(error, {})};
            return {outcome.front() == ':' ? mapped(error, outcome.substr(1)) : outcome};
        }
        bool const again = name.rfind("open", 0) == 0 || name == "statvfs" || name == "truncate";
        if (error == EINTR && again && (s.reported & of_move) == 0) return {"no failure"};
        calls result;
        if ((s.reported & none) != 0) result.push_back(mapped(error, {}));
        if ((s.reported & own) != 0) {
            std::string const given = call == name ? "" : call.substr(name.size() + 1);
            std::size_t const end = std::min(given.find(' '), given.size());
            result.push_back(mapped(error, given.substr(0, end),
                                    end == given.size() ? "" : given.substr(end + 1)));
        }
        if ((s.reported & (of_copy | of_move)) != 0) {
            bool const copies = (s.reported & of_copy) != 0;
            numbers of_target = {ENOENT, EEXIST, ENAMETOOLONG, EACCES};
            if (!copies) of_target.insert({ENOTDIR, EISDIR, ENOTEMPTY});
            if (of_target.count(error) != 0)
                result.push_back(mapped(error, s.to));
            else
                result.push_back(mapped(error, s.from, copies && error == EISDIR ? "" : s.to));
        }
        return result;
    }

    /// The outcome of `s` with the fault caused by `trial`.
    template <class Trial>
    std::string outcome_of(scenario const& s, surroundings const& around, Trial trial) {
        around.prepare();
        std::string const kept_before = around.kept();
        auto const open_before = open_descriptors();
        std::string const outcome = trial();
        std::filesystem::current_path(scratch.path8());
        EXPECT_EQ(around.kept(), kept_before) << s.name;
        EXPECT_EQ(open_descriptors(), open_before) << s.name;
        return outcome;
    }

    /// Lets each allocation of `s` fail in turn. Returns their number.
    int sweep_memory(scenario const& s, surroundings const& around) {
        around.prepare();
        std::string const normal = s.told(scratch.path8()), normal_effect = around.effect();
        for (int failing = 1;; ++failing) {
            scenario::failing_allocation = failing;
            std::string const outcome =
                outcome_of(s, around, [&] { return s.told(scratch.path8()); });
            scenario::failing_allocation = 0;
            bool const as_normal = outcome == normal && around.effect() == normal_effect;
            // Boost and the standard library report some failed allocations as ENOMEM.
            EXPECT_TRUE(as_normal || outcome == "std: std::bad_alloc" ||
                        outcome.find("ENOMEM") != outcome.npos)
                << s.name << ": allocation " << failing << ": " << outcome;
            if (as_normal && test_support::allocation_watch::allocations < failing)
                return failing - 1;
        }
    }

    /// Lets each call of `s` fail in turn. Returns the number of faults.
    int sweep(scenario const& s, surroundings const& around, bool short_transfers = false) {
        calls made;
        auto const trial = [&](std::size_t index, int error) {
            call_recorder recorded;
            recorded.failing_index = index, recorded.error = error;
            recorded.short_transfers = short_transfers;
            std::string const outcome = s.told(scratch.path8());
            if (made.empty()) made = recorded.all;
            return outcome;
        };
        around.prepare();
        std::string const normal = trial(static_cast<std::size_t>(-1), 0);
        std::string const normal_effect = around.effect();
        EXPECT_FALSE(made.empty()) << s.name;
        int faults = 0;
        for (std::size_t index = 0; index != made.size(); ++index) {
            for (int const error : all_errors) {
                if (error == 0 && made[index].rfind("readdir", 0) != 0) continue;
                ++faults;
                std::string const outcome =
                    outcome_of(s, around, [&] { return trial(index, error); });
                auto const wanted = expected(s, shown(made[index]), error);
                bool as_wanted = outcome == normal && around.effect() == normal_effect;
                for (auto const& text : wanted) as_wanted = as_wanted || matches(outcome, text);
                EXPECT_TRUE(as_wanted)
                    << s.name << ": " << made[index] << " (call " << index << ") fails with "
                    << test_support::error_name(error) << "\n  wanted " << wanted.front()
                    << "\n  got    " << outcome;
            }
        }
        return faults;
    }
};

TEST_F(FaultSweep, OfEveryCall) {
    constexpr auto tree = copy_option::recursive | copy_option::copy_symlinks;
    numbers const absent = {ENOENT, ENOTDIR}, ignored = {ENOENT, ENOTDIR, EINVAL};
    auto const at = [root = test_support::utf16(scratch.path8())](std::u16string const& name) {
        return root + u'/' + name;
    };
    auto const there = [](auto const& found) { return found.type != file_status::file_not_found; };
    std::string const listing = "std: boost::filesystem::directory_iterator*";
    auto removal = scenario("remove_all", own, [=] { remove_all(at(u"d")); })
                       .but("lstat", {ENOENT}, "pathless")
                       .but("closedir", {}, "pathless");
    for (std::string const call : {"openat @/d", "readdir @/d"})
        removal
            .but(call, {ENOENT}, "ok")  // removed by someone else
            .but(call + "/s", {ENOENT}, "DirectoryNotEmpty [@/d]")
            .but(call, {ENOTDIR, ELOOP}, "FileIsDirectory [@/d]")
            .but(call + "/s", {ENOTDIR, ELOOP}, "FileIsDirectory [@/d/s]");
    auto tree_copy =
        scenario("copy, tree watched", none | own | of_copy,
                 [=] { copy(at(u"d"), at(u"n"), tree, [](auto const&) { return true; }); })
            .on("@/d/s/f", "@/n/s/f")
            .but("fstatat", {EACCES}, "ok")  // an unsearchable directory is no ancestor
            .but("fstatat", {}, ":@/n");
    for (auto const call : {"open @/d", "open @/d/s", "openat @/d", "openat @/d/s", "opendir",
                            "fdopendir", "readdir", "closedir"})
        tree_copy.but(call, {}, listing);
    constexpr auto following = directory_option::follow_directory_symlinks;
    auto const list = [](char const* operation, auto action) {
        auto row = scenario(operation, own, action)
                       .but("closedir", {}, "listed*")
                       .but("readdir", {ENOENT}, "listed*")  // a removed directory
                       .but("lstat", {ENOENT}, "listed*");
        for (std::string const path : {"d/s", "./d/s", "./d/l", "./d/s/f", "./d/l/f"})
            for (std::string const call : {"openat @/", "fdopendir @/"})
                row.but(call + path, {ENOENT, ENOTDIR, ELOOP}, "listed*");
        return row;
    };
    scenario const rows[] = {
        scenario("exists, is_directory, is_regular_file, is_symlink", own,
                 [=] {
                     return exists(at(u"f")) && is_directory(at(u"d")) &&
                            is_regular_file(at(u"f")) && is_symlink(at(u"l"));
                 })
            .but("stat", ignored, "no")
            .but("lstat", ignored, "no"),
        scenario("status, symlink_status", none,
                 [=] { return there(status(at(u"f"))) && there(symlink_status(at(u"l"))); })
            .but("stat", {ENOENT, EINVAL}, "no")
            .but("lstat", {ENOENT, EINVAL}, "no"),
        scenario("status_express_light", own, [=] { return there(status_express_light(at(u"f"))); })
            .but("stat", {ENOENT, EINVAL}, "no"),
        scenario("file_size, hard_link_count, resize_file, last_write_time", own,
                 [=] {
                     resize_file(at(u"f"), file_size(at(u"f")) - hard_link_count(at(u"f")));
                     last_write_time(at(u"f"), last_write_time(at(u"g")));
                 }),
        scenario("access, read", own, [=] { return access(at(u"f"), access_read); })
            .but("access", {EACCES}, "no"),
        scenario("access, exists", own,
                 [=] { return access(at(u"f"), access_exists | access_write); })
            .but("access", {EACCES, ENOENT, EROFS}, "no"),
        scenario("permissions", own, [=] { permissions(at(u"f"), 0600); })
            .but("stat", {ENOENT}, "ok")
            .but("stat", {}, "pathless"),
        scenario("permissions, of a link", own,
                 [=] { permissions(at(u"l"), 0600 | file_status::perms_symlink); })
            .but("lstat", {ENOENT}, "*")
            .but("lstat", {}, "pathless"),
        scenario("get_current_path, absolute", none,
                 [=] { return get_current_path() + absolute(u"x"); }),
        scenario("change_current_path", own, [=] { change_current_path(at(u"d")); }),
        scenario("create_directory", own, [=] { create_directory(at(u"n")); }),
        scenario("create_directories", own, [=] { create_directories(at(u"n/m")); })
            .but("mkdir @/n", {EEXIST}, "PathNotFound [@/n/m]"),
        scenario("ensure_directories", own, [=] { return ensure_directories(at(u"n/m")); })
            .but("mkdir @/n", {EEXIST}, "PathNotFound [@/n/m]"),
        scenario("create_hard_link", own, [=] { create_hard_link(at(u"f"), at(u"n")); })
            .but("stat", absent, "ok"),
        scenario("create_symlink", own, [=] { create_symlink(u"t", at(u"n")); })
            .but("stat", absent, "ok"),
        scenario("read_symlink", own, [=] { return read_symlink(at(u"l")); }),
        scenario("rename", of_move, [=] { rename(at(u"d/s/f"), at(u"d/n")); })
            .on("@/d/s/f", "@/d/n"),
        scenario("remove", own, [=] { remove(at(u"f")), remove(at(u"e")); })
            .but("lstat", {ENOENT}, "pathless"),
        scenario("remove_if_exists", own, [=] { return remove_if_exists(at(u"f")); })
            .but("lstat", {ENOENT}, "no")
            .but("unlink", {ENOENT}, "no"),
        scenario(
            "remove_file, remove_symlink, remove_directory", own,
            [=] { remove_symlink(at(u"l")), remove_directory(at(u"e")), remove_file(at(u"f")); })
            .but("unlink @/l", {EPERM}, "FileIsDirectory [@/l]")
            .but("unlink @/f", {EPERM}, "FileIsDirectory [@/f]"),
        removal,
        scenario("copy_file", of_copy, [=] { copy_file(at(u"f"), at(u"n")); }),
        scenario("copy_file over", of_copy,
                 [=] { copy_file(at(u"f"), at(u"g"), copy_option::overwrite_if_exists); })
            .on("@/f", "@/g"),
        scenario("copy_file, skip", of_copy | own,
                 [=] { copy_file(at(u"f"), at(u"n"), copy_option::skip_existing); }),
        scenario("copy_file, update", of_copy | none,
                 [=] { copy_file(at(u"f"), at(u"n"), copy_option::update_existing); }),
        scenario("copy_directory", of_copy, [=] { copy_directory(at(u"d"), at(u"n")); })
            .on("@/d", "@/n"),
        scenario("copy_symlink", own, [=] { copy_symlink(at(u"l"), at(u"n")); })
            .but("lstat", {}, "pathless")
            .but("stat", absent, "ok"),
        scenario("copy, link followed", of_copy | own | none, [=] { copy(at(u"l"), at(u"n")); })
            .on("f", "@/n")
            .but("lstat f", {ENOENT}, "PathNotFound [@/l]"),
        tree_copy,
        scenario("canonical", own, [=] { return canonical(at(u"l")); })
            .but("stat", absent, "PathNotFound"),
        scenario("weakly_canonical, relative", own,
                 [=] { return weakly_canonical(at(u"d/x")) + relative(at(u"d/x"), at(u"d")); })
            .but("stat", ignored, "*"),
        scenario("equivalent", of_copy, [=] { return equivalent(at(u"f"), at(u"g")); })
            .on("@/f", "@/g"),
        list("directory_iterator", [=] { return listed(directory_iterator(at(u"d"))); }),
        list("recursive_directory_iterator",
             [=] { return listed(recursive_directory_iterator(at(u"d"))); }),
        list("recursive_directory_iterator, links followed",
             [=] { return listed(recursive_directory_iterator(at(u"./d"), following)); }),
        list("recursive_directory_iterator, going on",
             [=] {  // lists less, and fails never
                 auto const goes_on = [](auto const&) { return true; };
                 recursive_directory_iterator const all(at(u"./d"), following, goes_on);
                 return listed(all).substr(0, 6);
             }),
        list("directory_entry",
             [=] {
                 directory_entry const d(at(u"d"));
                 std::string result = "listed";
                 for (auto const options : {directory_option::none, directory_option::read_status})
                     for (directory_entry const& e : directory_iterator(d.path(), options))
                         result += std::to_string(e.symlink_status().type | e.status().permissions);
                 return result;
             })
            .but("stat", {ENOENT, EINVAL}, "listed*")
            .but("fstatat", {ENOENT, EINVAL}, "listed*")
            .but("lstat @/d", {EINVAL}, "InvalidArgument \"\" [@/d]")
            .but("lstat", {EINVAL}, "listed*"),
        scenario("space", own, [=] { return space(upath(at(u"e"))).capacity > 0; }),
    };
    int faults = 0, allocations = 0;
    for (auto const& row : rows) {
        auto const kept = [copies = row.name.rfind("copy", 0) == 0] {
            return copies ? everything_in("f") + everything_in("d") + everything_in("l") : "";
        };
        auto const effect = [this] { return everything_in(scratch.path8()); };
        surroundings const around = {[this] { make_tree(); }, kept, effect};
        faults += sweep(row, around);
        allocations += sweep_memory(row, around);
    }
    std::printf("%d faults and %d failed allocations tried\n", faults, allocations);
}

TEST_F(FaultSweep, OfAMoveAcrossDevices) {
    std::string const place = test_support::directory_on_another_file_system();
    if (place.empty()) GTEST_SKIP() << "no move gets EXDEV without a second file system";
    test_support::scratch_dir const elsewhere(place);
    std::string const target = elsewhere.path8() + "/d";
    std::u16string const from = scratch / u"d", to = test_support::utf16(target);
    auto move = scenario("rename", of_move, [=] { rename(from, to); }).on("@/d", target);
    // An entry that vanishes during the removal counts as removed.
    for (char const* const call : {"openat", "fdopendir", "readdir"})
        move.but(call, {ENOENT, ENOTDIR, ELOOP}, "*");
    move.but("lstat", {ENOENT, ENOTDIR}, "*");  // EIO if missing from the copy
    // A failed stream may go unreported; then the copy is found to be too short.
    for (char const* const call : {"read", "write", "writev"}) move.but(call, {}, "*");
#ifdef _LIBCPP_VERSION
    // Its copy takes a failed listing for a complete one, so that entries are found missing; its
    // removal goes on after a failure and reports that the directory is not empty.
    for (char const* const call : {"readdir", "openat", "fdopendir", "closedir", "unlinkat"})
        move.but(call, {}, "*");
    move.but("stat", {ENOENT}, "*");
#endif
    make_tree();
    std::string const whole = everything_in("d");
    surroundings const around = {
        [&] { make_tree(), std::filesystem::remove_all(target); },
        // Until the copy is complete, the source must be.
        [&] { return everything_in(target) == whole ? whole : everything_in("d"); },
        [&] { return everything_in(target) + "and\n" + everything_in("d"); }};
    for (bool const shortened : {false, true})
        std::printf("%d faults tried\n", sweep(move, around, shortened));
}

// What no system does, and what the sweep can't distinguish.
TEST_F(FaultSweep, OfOddCalls) {
    make_tree();
    std::string const overlong(1024, 'n');
    struct {
        std::string call;
        int error;
        std::function<void()> action;
        std::string outcome;
    } const rows[] = {
        {"mkdir n", 0, [] { create_directory(u"n"), create_directories(u"m"); }, "ok"},
        {"rename f t", 0, [] { rename(u"f", u"t"); }, "ok"},
        {"lstat f", EIO, [] { copy(u"f", u"g"); }, "SystemError EIO"},
        {"", 0, [] { read_symlink(u"/negative"); }, "SystemError " + std::to_string(ENAMETOOLONG)},
        // An overlong source is at fault, whatever the error number.
        {"stat " + overlong, ENOENT, [&] { rename(test_support::utf16(overlong), u"t"); },
         "FileNameTooLarge [" + overlong + "]"},
    };
    for (auto const& row : rows) {
        call_recorder recorded;
        recorded.failing = row.call, recorded.error = row.error;
        EXPECT_OUTCOME(row.action(), row.outcome) << row.call;
    }
}

using RemoveAll = FaultSweep;
TEST_F(RemoveAll, LooksAgainBeforeItRemovesOrGoesDown) {
    std::filesystem::create_directories("d/s");
    scratch.file(u"d/s/f");
    call_recorder recorded;
    remove_all(u"d");
    calls made;  // without readdir: their number depends on the C library
    for (auto const& call : recorded.all)
        if (call.rfind("readdir", 0) != 0) made.push_back(call);
    calls const expected = {
        "lstat d",      "openat d",   "close",       "opendir d",  // the directory is still one
        "lstat d/s",    "openat d",   "close",                     // and with its entry
        "openat d/s",   "close",      "opendir d/s",               // descend
        "lstat d/s/f",  "openat d/s", "close",       "unlink d/s/f",
        "closedir d/s", "rmdir d/s",  "closedir d",  "rmdir d"};
    EXPECT_EQ(made, expected);
}

using Copy = FaultSweep;
TEST_F(Copy, MakesCallsInProportionToItsEntries) {
    auto const merged = [](int depth) {
        std::u16string chain = u"chain";
        for (int level = 0; level < depth; ++level) chain += u"/d";
        ensure_directories(chain);
        constexpr auto options = copy_option::recursive | copy_option::skip_existing;
        copy(u"chain", u"copy", options);
        call_recorder recorded;
        copy(u"chain", u"copy", options);
        return recorded.all.size();
    };
    std::size_t const once = merged(40);
    EXPECT_LT(merged(80), once * 21 / 10);
}

using Directory = FaultSweep;
TEST_F(Directory, AsksTheSystemOnceForAStatus) {
    make_tree();
    auto const queries = [](directory_option options, auto ask) {
        call_recorder recorded;
        for (directory_entry const& entry : directory_iterator(u".", options)) ask(entry);
        std::multiset<std::string> made;
        for (auto const& call : recorded.all)
            if (call.find("stat") < call.find(' ')) made.insert(call);
        return made;
    };
    auto const type = [](directory_entry const& e) { return e.type() + e.is_symlink(); };
    auto const all = [](directory_entry const& e) {
        return e.type() + e.symlink_status().size + e.status().size +
               (e.is_regular_file() ? e.file_size() : 0) + e.last_write_time().is_special();
    };
    EXPECT_TRUE(queries(directory_option::none, type).empty());
    auto once = queries(directory_option::read_status, type);
    EXPECT_EQ(calls(once.begin(), once.end()),
              (calls{"fstatat ./d", "fstatat ./e", "fstatat ./f", "fstatat ./g", "fstatat ./l"}));
    for (int followed = 0; followed != 4; ++followed) once.insert("stat ./l");
    EXPECT_EQ(queries(directory_option::read_status, all), once);
}

using CurrentPath = FaultSweep;
TEST_F(CurrentPath, IsReadByNobodyWhileItChanges) {
    std::atomic<bool> changing{false}, done{false};
    std::thread changes([&] {
        call_recorder recorded;
        recorded.during = [&] {
            changing = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            changing = false;
        };
        for (int i = 0; i < 20; ++i) change_current_path(u".");
        done = true;
    });
    int overlaps = 0;
    call_recorder recorded;
    recorded.during = [&] { overlaps += changing ? 1 : 0; };
    while (!done) get_current_path();
    changes.join();
    EXPECT_EQ(overlaps, 0);
}

TEST(Encoding, OpensEachConverterOncePerThreadAndClosesItWithIt) {
    int const open_before = call_recorder::open_converters;
    std::vector<std::thread> threads;
    for (char16_t unit = u'\u6F22'; unit != u'\u6F22' + 100; ++unit)
        threads.emplace_back([text = std::u16string(700, unit)] {
            call_recorder const recorded;
            detail::to_filesystem(u"ascii");  // needs no converter
            for (int round = 0; round != 10; ++round)
                EXPECT_EQ(detail::from_filesystem(detail::to_filesystem(text)), text);
            EXPECT_EQ(recorded.all, calls(2, "iconv_open"));
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(call_recorder::open_converters, open_before);
}

TEST(Encoding, GivesNothingWithoutAConverter) {
    int const open_before = call_recorder::open_converters;
    std::thread([] {
        call_recorder recorded;
        recorded.failing = "iconv_open";
        EXPECT_EQ(detail::to_filesystem(u"\u00E9") + detail::to_filesystem(u"ascii"), "ascii");
        EXPECT_EQ(detail::from_filesystem("\xC3\xA9"), u"");
    }).join();
    EXPECT_EQ(call_recorder::open_converters, open_before) << "an unopened converter was closed";
}

}  // namespace
}  // namespace ko::filesystem

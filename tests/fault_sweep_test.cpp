// Every system call of every operation fails once with each error number: see docs/testing.md.

#include <climits>
#include <regex>

#include "support/allocations.hpp"
#include "support/outcome.hpp"
#include "support/system_calls.hpp"

namespace ko::filesystem::test_support::fault_sweep_test {

using calls = std::vector<std::string>;
using numbers = std::set<int>;

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
    return known == classes.end() ? text + ' ' + error_names.at(error) : text;
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
              return outcome(root, [&] {
                  allocation_watch const watch(failing_allocation);
                  return action();
              });
          }) {}

    /// The calls `call` (a name, or a name and a path, or some of both with bars between) result in
    /// `outcome` for `errors`, or for all if empty. "pathless" is the exception without a path, ":"
    /// and a path the one with that path; an asterisk at the end matches anything.
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
    calls removed = {};  ///< any of which may stay, and is then reported with the target
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

/// The status of each entry, links followed or not.
std::string asked(directory_iterator all) {
    std::string result = "listed";
    for (directory_entry const& e : all)
        result += std::to_string(e.symlink_status().type | e.status().permissions);
    return result;
}

bool matches(std::string const& outcome, std::string const& wanted) {
    if (wanted.back() != '*') return outcome == wanted;
    return outcome.rfind(wanted.substr(0, wanted.size() - 1), 0) == 0;
}

class FaultSweep : public scratch_test {
protected:
    FaultSweep() { EXPECT_EQ(utf8(utf16("\u00E9")), "\u00E9"); }  // opens both converters
    void make_tree() {
        std::filesystem::current_path(scratch.path8());
        for (auto const& entry : std::filesystem::directory_iterator("."))
            std::filesystem::remove_all(entry);
        scratch.make(
            {"f: content", "g: old", "e/", "d/", "d/s/", "d/s/f: inner", "l -> f", "d/l -> s"});
    }

    /// Everything at `path` and below: names, modes and contents.
    static std::string everything_in(std::filesystem::path const& path) {
        namespace fs = std::filesystem;
        auto const s = fs::symlink_status(path);
        if (!fs::exists(s)) return {};
        auto text = path.filename().string() + std::to_string(static_cast<int>(s.permissions()));
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

    static auto open_descriptors() {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    }

    static calls expected(scenario const& s, std::string const& call, int error) {
        if (error == 0) return {"*"};  // not a failure that can be seen
        std::string name, path1, path2;
        std::istringstream(call) >> name >> path1 >> path2;
        for (auto const& [exempt, numbers_meant, outcome] : s.exemptions) {
            std::string const all = '|' + exempt + '|';
            bool const named =
                all.find('|' + call + '|') != all.npos || all.find('|' + name + '|') != all.npos;
            bool const meant = numbers_meant.empty() || numbers_meant.count(error) != 0;
            if (!named || !meant) continue;
            if (outcome == "pathless") return {mapped(error, {})};
            return {outcome.front() == ':' ? mapped(error, outcome.substr(1)) : outcome};
        }
        bool const again = name.rfind("open", 0) == 0 || name == "statvfs" || name == "truncate";
        if (error == EINTR && again && (s.reported & of_move) == 0) return {"no failure"};
        calls result;
        if ((s.reported & none) != 0) result.push_back(mapped(error, {}));
        if ((s.reported & own) != 0) result.push_back(mapped(error, path1, path2));
        if ((s.reported & (of_copy | of_move)) != 0) {
            bool const copies = (s.reported & of_copy) != 0;
            numbers of_target = {ENOENT, EEXIST, ENAMETOOLONG, EACCES};
            if (!copies) of_target.insert({ENOTDIR, EISDIR, ENOTEMPTY});
            if (of_target.count(error) != 0)
                result.push_back(mapped(error, s.to));
            else
                result.push_back(mapped(error, s.from, copies && error == EISDIR ? "" : s.to));
            for (auto const& path : s.removed) result.push_back(mapped(error, path, s.to));
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
            if (as_normal && allocation_watch::allocations < failing) return failing - 1;
        }
    }

    /// Lets each call of `s` fail in turn. Returns the number of faults.
    int sweep(scenario const& s, surroundings const& around, bool short_transfers = false) {
        detail::from_filesystem(detail::to_filesystem(u"\u00E9"));  // opens the converters
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
            auto const call = std::regex_replace(made[index], std::regex(scratch.path8()), "@");
            for (auto const& [error, error_name] : error_names) {
                if (error == 0 && made[index].rfind("readdir", 0) != 0) continue;
                ++faults;
                std::string const outcome =
                    outcome_of(s, around, [&, number = error] { return trial(index, number); });
                auto const wanted = expected(s, call, error);
                bool as_wanted = outcome == normal && around.effect() == normal_effect;
                for (auto const& text : wanted) as_wanted = as_wanted || matches(outcome, text);
                EXPECT_TRUE(as_wanted)
                    << s.name << ": " << made[index] << " (call " << index << ") fails with "
                    << error_name << "\n  wanted " << wanted.front() << "\n  got    " << outcome;
            }
        }
        return faults;
    }
};

/// `remove_all` of the first of the directories, each of which has the next one in it.
scenario removal(std::string const& root, std::vector<std::string> const& directories) {
    std::u16string const path = utf16(root + directories.front());
    auto row = scenario("remove_all", own, [=] { remove_all(path); })
                   .but("lstat|fstatat", {ENOENT}, "pathless")
                   .but("closedir", {}, "pathless");
    std::string without = "ok";  // removed by someone else
    for (std::string const& directory : directories) {
        for (std::string const call : {"openat @", "fdopendir @", "readdir @"})
            row.but(call + directory, {ENOENT}, without)
                .but(call + directory, {ENOTDIR, ELOOP}, "FileIsDirectory [@" + directory + ']');
        without = "DirectoryNotEmpty [@" + directory + ']';
    }
    return row;
}

TEST_F(FaultSweep, OfEveryCall) {
    constexpr auto tree = copy_option::recursive | copy_option::copy_symlinks;
    numbers const absent = {ENOENT, ENOTDIR}, ignored = {ENOENT, ENOTDIR, EINVAL};
    // Those of make_tree, and `n`, which isn't there.
    std::u16string const root = utf16(scratch.path8()) + u'/', d = root + u'd', e = root + u'e',
                         f = root + u'f', g = root + u'g', l = root + u'l', n = root + u'n';
    auto const there = [](auto const& found) { return found.type != file_status::file_not_found; };
    std::string const listing = "std: boost::filesystem::directory_iterator*";
    auto tree_copy =
        scenario("copy, tree watched", none | own | of_copy,
                 [=] { copy(d, n, tree, [](auto const&) { return true; }); })
            .on("@/d/s/f", "@/n/s/f")
            .but("fstatat", {EACCES}, "ok")  // an unsearchable directory is no ancestor
            .but("fstatat", {}, ":@/n")
            .but("open @/d|open @/d/s|openat @/d|openat @/d/s", {}, listing)
            .but("opendir|fdopendir|readdir|closedir", {}, listing);
    using option = directory_option;
    constexpr auto following = option::follow_directory_symlinks;
    auto const goes_on = [](FsysExceptionBase const&) { return true; };
    auto const list = [](char const* operation, auto action) {
        auto row = scenario(operation, own, action)
                       .but("closedir", {}, "listed*")
                       .but("readdir|lstat", {ENOENT}, "listed*");  // a removed directory
        for (std::string const path : {"d/s", "./d/s", "./d/l", "./d/s/f", "./d/l/f"})
            for (std::string const call : {"openat @/", "fdopendir @/"})
                row.but(call + path, {ENOENT, ENOTDIR, ELOOP}, "listed*");
        return row;
    };
    scenario const rows[] = {
        scenario(
            "exists, is_directory, is_regular_file, is_symlink", own,
            [=] { return exists(f) && is_directory(d) && is_regular_file(f) && is_symlink(l); })
            .but("stat|lstat", ignored, "no"),
        scenario("status, symlink_status", none,
                 [=] { return there(status(f)) && there(symlink_status(l)); })
            .but("stat|lstat", {ENOENT, EINVAL}, "no"),
        scenario("status_express_light", own, [=] { return there(status_express_light(f)); })
            .but("stat", {ENOENT, EINVAL}, "no"),
        scenario("file_size, hard_link_count, resize_file, last_write_time", own,
                 [=] {
                     resize_file(f, file_size(f) - hard_link_count(f));
                     last_write_time(f, last_write_time(g));
                 }),
        scenario("access, read", own, [=] { return access(f, access_read); })
            .but("access", {EACCES}, "no"),
        scenario("access, exists", own, [=] { return access(f, access_exists | access_write); })
            .but("access", {EACCES, ENOENT, EROFS}, "no"),
        scenario("permissions", own, [=] { permissions(f, 0600); })
            .but("stat", {ENOENT}, "ok")
            .but("stat", {}, "pathless"),
        scenario("permissions, of a link", own,
                 [=] { permissions(l, 0600 | file_status::perms_symlink); })
            .but("lstat", {ENOENT}, "*")
            .but("lstat", {}, "pathless"),
        scenario("get_current_path, absolute", none,
                 [=] { return get_current_path() + absolute(u"x"); }),
        scenario("change_current_path", own, [=] { change_current_path(d); }),
        scenario("create_directory", own, [=] { create_directory(n); }),
        scenario("create_directories", own, [=] { create_directories(n + u"/m"); })
            .but("mkdir @/n", {EEXIST}, "PathNotFound [@/n/m]"),
        scenario("ensure_directories", own, [=] { return ensure_directories(n + u"/m"); })
            .but("mkdir @/n", {EEXIST}, "PathNotFound [@/n/m]"),
        scenario("create_hard_link, create_symlink", own,
                 [=] { create_hard_link(f, n), create_symlink(u"t", n + u"n"); })
            .but("stat", absent, "ok"),
        scenario("read_symlink", own, [=] { return read_symlink(l); }),
        scenario("rename", of_move, [=] { rename(d + u"/s/f", d + u"/n"); }).on("@/d/s/f", "@/d/n"),
        scenario("rename_durably", of_move, [=] { rename_durably(d + u"/s/f", d + u"/n"); })
            .on("@/d/s/f", "@/d/n")
            .but("open", {EACCES}, "ok")  // by sync, which reports nothing
            .but("open @/d/s/f|fsync @/d/s/f", {ENOENT}, ":@/d/n")
            .but("open|fsync", {ENOENT}, ":@/d/s/f"),  // after the move
        scenario("remove", own, [=] { remove(f), remove(e); }).but("lstat", {ENOENT}, "pathless"),
        scenario("remove_if_exists", own, [=] { return remove_if_exists(f); })
            .but("lstat|unlink", {ENOENT}, "no"),
        scenario("remove_file, remove_symlink, remove_directory", own,
                 [=] { remove_symlink(l), remove_directory(e), remove_file(f); })
            .but("unlink @/l", {EPERM}, "FileIsDirectory [@/l]")
            .but("unlink @/f", {EPERM}, "FileIsDirectory [@/f]"),
        removal(scratch.path8(), {"/d", "/d/s"}),
        scenario("copy_file", of_copy, [=] { copy_file(f, n); }),
        scenario("copy_file over", of_copy,
                 [=] { copy_file(f, g, copy_option::overwrite_if_exists); })
            .on("@/f", "@/g"),
        scenario("copy_file, skip", of_copy | own,
                 [=] { copy_file(f, n, copy_option::skip_existing); }),
        scenario("copy_file, update", of_copy | none,
                 [=] { copy_file(f, n, copy_option::update_existing); }),
        scenario("copy_directory", of_copy, [=] { copy_directory(d, n); }).on("@/d", "@/n"),
        scenario("copy_symlink", own, [=] { copy_symlink(l, n); })
            .but("lstat", {}, "pathless")
            .but("stat", absent, "ok"),
        scenario("copy, link followed", of_copy | own | none, [=] { copy(l, n); })
            .on("f", "@/n")
            .but("lstat f", {ENOENT}, "PathNotFound [@/l]"),
        tree_copy,
        scenario("canonical", own, [=] { return canonical(l); })
            .but("stat", absent, "PathNotFound"),
        scenario("weakly_canonical, relative", own,
                 [=] { return weakly_canonical(d + u"/x") + relative(d + u"/x", d); })
            .but("stat", ignored, "*"),
        scenario("equivalent", of_copy, [=] { return equivalent(f, g); }).on("@/f", "@/g"),
        list("directory_iterator", [=] { return listed(directory_iterator(d)); }),
        list("recursive_directory_iterator",
             [=] { return listed(recursive_directory_iterator(d)); }),
        list(
            "recursive_directory_iterator, denied skipped",
            [=] { return listed(recursive_directory_iterator(d, option::skip_permission_denied)); })
            .but("openat|fdopendir|readdir", {EACCES, EPERM}, "listed*"),
        list("recursive_directory_iterator, links followed",
             [=] { return listed(recursive_directory_iterator(root + u"./d", following)); }),
        list(
            "recursive_directory_iterator, going on",
            [=] { return listed(recursive_directory_iterator(root + u"./d", following, goes_on)); })
            .but("openat|fdopendir|fstat|readdir", {}, "listed*"),
        list("directory_entry", [=] { return asked(directory_iterator(d)); })
            .but("stat", {ENOENT, EINVAL}, "listed*")
            .but("lstat", {EINVAL}, "listed*"),
        list("directory_entry, status read",
             [=] {
                 return asked(directory_iterator(d, option::read_status)) +
                        std::to_string(directory_entry(d).type());
             })
            .but("stat|fstatat", {ENOENT, EINVAL}, "listed*"),
        scenario("space", own, [=] { return space(upath(e)).capacity > 0; }),
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
    std::string const place = directory_on_another_file_system();
    if (place.empty())
        // The system reports EXDEV only between two, and mounting another one needs root.
        GTEST_SKIP() << "needs a second file system; /dev/shm is none to write to";
    scratch_dir const elsewhere(place);
    std::string const target = elsewhere.path8() + "/d";
    std::u16string const from = scratch / u"d", to = utf16(target);
    auto move = scenario("rename", of_move, [=] { rename(from, to); }).on("@/d", target);
    move.removed = {"@/d", "@/d/l", "@/d/s", "@/d/s/f"};
    // An entry that vanishes during the removal counts as removed.
    move.but("openat|fdopendir|readdir", {ENOENT, ENOTDIR, ELOOP}, "*");
    move.but("lstat", {ENOENT, ENOTDIR}, "*");  // EIO if missing from the copy
    // A failed stream may go unreported; then the copy is found to be too short.
    move.but("read|write|writev", {}, "*");
#ifdef _LIBCPP_VERSION
    // Its copy takes a failed listing for a complete one, so that entries are found missing; its
    // removal goes on after a failure and reports that the directory is not empty.
    move.but("readdir|openat|fdopendir|closedir|unlinkat", {}, "*").but("stat", {ENOENT}, "*");
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
    auto const check = [&](std::string const& call, int error, std::string const& result,
                           auto action) {
        call_recorder recorded;
        recorded.failing = call, recorded.error = error;
        EXPECT_OUTCOME(action(), result) << call;
    };
    check("mkdir n", 0, "ok", [] { create_directory(u"n"), create_directories(u"m"); });
    check("rename f t", 0, "ok", [] { rename(u"f", u"t"); });
    check("lstat f", EIO, "SystemError EIO", [] { copy(u"f", u"g"); });
    check("", 0, "SystemError ENAMETOOLONG", [] { read_symlink(u"/negative"); });
    // An overlong source is at fault, whatever the error number.
    check("stat " + overlong, ENOENT, "FileNameTooLarge [" + overlong + "]",
          [&] { rename(utf16(overlong), u"t"); });
}

using RemoveAll = FaultSweep;
TEST_F(RemoveAll, FollowsNoLinkPutInPlaceOfADirectory) {
    for (auto const& [moment, link] : {std::pair("lstat d/s,openat d", "../e"),  // an empty one
                                       {"openat d/s", "../elsewhere"},
                                       {"opendir d/s", "../elsewhere"},
                                       {"lstat d/s/f", "../elsewhere"}}) {
        make_tree();
        std::filesystem::copy("d/s", "elsewhere");
        call_recorder recorded;
        recorded.during = [&, made = std::string(), now = moment, to = link]() mutable {
            made += ',' + recorded.all.back();
            bool const is_now = std::regex_search(made, std::regex(std::string(now) + '$'));
            if (!is_now || std::filesystem::exists("moved")) return;
            std::filesystem::rename("d/s", "moved");
            std::filesystem::create_symlink(to, "d/s");
        };
        EXPECT_OUTCOME(remove_all(u"d"), "ok") << moment;
        EXPECT_EQ(everything_in("elsewhere/f") + everything_in("d"), everything_in("moved/f"));
    }
}

// Below a path of the system's limit, the walk goes on relative to open directories.
TEST_F(RemoveAll, GoesOnBelowTheLongestPath) {
    std::string const root = scratch.path8();
    std::string top = root + "/d";
    while (top.size() < PATH_MAX - 255) top += '/' + std::string(200, 'x');
    top += '/' + std::string(PATH_MAX - 3 - top.size(), 'y');
    auto const below_top = [&](auto action) {
        std::filesystem::current_path(top);
        action();
        std::filesystem::current_path(root);
    };
    make_tree();
    scratch.make({"e/f: kept"});
    auto const make = [&] {
        std::filesystem::create_directories(top);
        below_top([&] {
            std::filesystem::create_directories("s/t");
            static_cast<void>(::symlink((root + "/e").c_str(), "s/l"));
        });
    };
    surroundings const around = {make, [] { return everything_in("e"); },
                                 [&] { return std::to_string(std::filesystem::exists(top)); }};
    std::string const shown = top.substr(root.size());
    sweep(removal(root, {shown, shown + "/s", shown + "/s/t"}), around);
    make();
    call_recorder recorded;
    recorded.during = [&] {  // puts a link in its place after it was found to be a directory
        if (recorded.all.back() != "openat " + top + "/s") return;
        below_top([&] {
            std::filesystem::rename("s", root + "/moved");
            std::filesystem::create_symlink(root + "/e", "s");
        });
    };
    EXPECT_OUTCOME(remove_all(utf16(top)), "ok");
    EXPECT_TRUE(std::filesystem::exists("e/f") && std::filesystem::exists("moved/t"));
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
        return e.type() + e.symlink_status().size + e.is_directory() + e.is_regular_file() +
               (e.is_directory() ? 0 : e.file_size()) + e.status().size +
               e.last_write_time().is_special();
    };
    using strings = std::multiset<std::string>;
    EXPECT_EQ(queries(directory_option::none, type), strings());
    strings once = {"fstatat ./d", "fstatat ./e", "fstatat ./f", "fstatat ./g", "fstatat ./l"};
    EXPECT_EQ(queries(directory_option::read_status, type), once);
    for (int followed = 0; followed != 6; ++followed) once.insert("stat ./l");
    EXPECT_EQ(queries(directory_option::read_status, all), once);
}

using CurrentPath = FaultSweep;
TEST_F(CurrentPath, IsReadByNobodyWhileItChanges) {
    std::atomic<bool> changing{false}, done{false};
    std::thread changes([&] {
        call_recorder recorded;
        recorded.during = [&] { changing = true, ::usleep(1000), changing = false; };
        for (int i = 0; i < 20; ++i) change_current_path(u".");
        done = true;
    });
    int overlaps = 0, hanging = 0, status = -1;
    call_recorder recorded;
    recorded.during = [&] { overlaps += changing ? 1 : 0; };
    while (!done && hanging == 0) {
        get_current_path();
        while (!changing && !done) std::this_thread::yield();
        pid_t const child = ::fork();  // while the other thread has the lock
        if (child == 0) ::alarm(5), get_current_path(), std::_Exit(0);
        hanging += ::waitpid(child, &status, 0) != child || status != 0 ? 1 : 0;
    }
    changes.join();
    EXPECT_EQ(overlaps + hanging, 0);
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

using Converters = FaultSweep;
TEST_F(Converters, AreOpenedBeforeDirectories) {
    make_tree();
    constexpr auto tree = copy_option::recursive | copy_option::skip_symlinks;
    std::function<void()> const walks[] = {
        [] { static_cast<void>(recursive_directory_iterator(u"d")); },
        [] { copy(u"d", u"n", tree); }, [] { remove_all(u"d"); }};
    for (auto const& walk : walks)
        std::thread([&] {
            call_recorder recorded;
            walk();
            auto const is_open = [](auto const& call) { return call.rfind("open", 0) == 0; };
            auto const first = std::find_if(recorded.all.begin(), recorded.all.end(), is_open);
            EXPECT_EQ(std::count(recorded.all.begin(), first, "iconv_open"), 2);
        }).join();
}

TEST_F(Converters, ThatFailLeadNoCopyElsewhere) {
    scratch.make({"\u00E9/", "\u00E9/\u6F22/", "\u00E9/\u6F22/inner", "stranger"});
    for (std::size_t failing = 0; failing != 12; ++failing)
        std::thread([&] {
            call_recorder recorded;
            recorded.failing_index = failing, recorded.error = ENOMEM;
            std::error_code code;
            attempt(code, [] { copy(u"\u00E9", u"n", copy_option::recursive); });
            EXPECT_FALSE(std::filesystem::exists("n/stranger") ||
                         std::filesystem::exists("n/\u6F22/stranger"));
            EXPECT_EQ(!code, std::filesystem::exists("n/\u6F22/inner")) << failing;
            std::filesystem::remove_all("n");
        }).join();
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

}  // namespace ko::filesystem::test_support::fault_sweep_test

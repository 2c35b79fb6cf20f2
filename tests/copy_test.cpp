#include "support/outcome.hpp"

namespace ko::filesystem::test_support::copy_test {

using option = copy_option;
constexpr option overwrite = option::overwrite_if_exists, skip = option::skip_existing,
                 update = option::update_existing, recursive = option::recursive,
                 keep_links = option::copy_symlinks, skip_links = option::skip_symlinks,
                 make_links = option::create_symlinks;

/// Tables hold for texts and for path objects.
class Copy : public table_test {
protected:
    static void file(char16_t const* name, char const* content, time_t written = 0) {
        std::ofstream(utf8(name)) << content;
        timespec const times[] = {{written, 0}, {written, 0}};
        must(::utimensat(AT_FDCWD, utf8(name).c_str(), times, 0) == 0);
    }

    /// The content of a file, the text of a link, or the state of the file "f" in a directory.
    std::string state(std::u16string const& name) const {
        if (is_symlink(name)) return "link " + utf8(read_symlink(name));
        if (is_directory(name)) return "directory of " + state(name + u"/f");
        return exists(name) ? scratch.content(name) : "nothing";
    }
};

// Every value of the options with every kind of source and target, against the rules.

std::string const invalid = "InvalidArgument \"Invalid combination selected: ";
std::string const together = " cannot be used together\"";
std::string const rejected =
    invalid + "overwrite_if_exists, skip_existing & update_existing" + together;

enum class target { missing, old_file, new_file, directory, dangling };

using result = std::pair<std::string, std::string>;  // outcome, state

struct rules {
    std::u16string source;
    target to;
    option options;
    std::string before;

    int has(option one) const { return (options & one) != option::none; }
    bool to_exists() const { return to != target::missing && to != target::dangling; }
    bool to_is_file() const { return to == target::old_file || to == target::new_file; }
    result failed(std::string const& outcome) const { return {outcome, before}; }
    result expected() const {
        if (has(keep_links) && has(skip_links))
            return failed(invalid + "copy_symlinks & skip_symlinks" + together);
        if (has(overwrite) + has(skip) + has(update) > 1) return failed(rejected);
        if (source == u"missing") return failed("PathNotFound");
        if (source == u"fifo") return failed("InvalidArgument \"Unsupported file type\"");
        if (source == u"file") return file("file");
        if (source == u"directory") return directory("directory");
        if (has(keep_links)) return link(utf8(read_symlink(source)));
        if (has(skip_links) || source == u"to link") return {"ok", before};
        if (source == u"dangling") return failed("PathNotFound [dangling]");
        return source == u"to file" ? file("file") : directory("directory");
    }
    result link(std::string const& text) const {
        if (to_exists()) return failed("FileExistsError");
        if (to == target::dangling) return failed("FileExistsError [" + text + "]");
        return {"ok", "link " + text};
    }
    result file(std::string const& from) const {
        if (has(skip)) return to_exists() ? result{"ok", before} : content(from, false);
        if (has(update)) return to == target::new_file ? result{"ok", before} : content(from, true);
        return has(make_links) ? link(from) : content(from, has(overwrite) != 0);
    }
    result content(std::string const& from, bool replace) const {
        if (to == target::missing || (to_is_file() && replace)) return {"ok", "source"};
        if (!replace) return failed("FileExistsError [to]");
        if (to == target::directory) return failed("FileIsDirectory [" + from + "]");
        return {"ok", before};  // through the dangling link
    }
    result directory(std::string const& from) const {
        if (has(make_links)) return link(from);
        if (has(recursive) == 0 && to == target::missing) return {"ok", "directory of nothing"};
        if (has(recursive) == 0 && to == target::directory) return {"ok", before};
        bool const may_exist = has(recursive) != 0 && has(overwrite) + has(skip) + has(update) != 0;
        if (to == target::dangling || (to_exists() && !may_exist))
            return failed("FileExistsError [to]");
        if (to_is_file())
            return failed(has(update) ? "NotDirectoryError" : "NotDirectoryError [" + from + "/f]");
        return {"ok", to == target::missing || has(skip) == 0 ? "directory of source" : before};
    }
};

TEST_F(Copy, FollowsTheRulesForAllOptions) {
    scratch.make({"directory/", "to file -> file", "to dir -> directory", "to link -> to file",
                  "dangling -> nowhere", "fifo|"});
    for (char16_t const* const name : {u"file", u"directory/f"}) file(name, "source", 1000);
    for (std::u16string const source : {u"missing", u"file", u"directory", u"to file", u"to dir",
                                        u"dangling", u"to link", u"fifo"})
        for (target const to : {target::missing, target::old_file, target::new_file,
                                target::directory, target::dangling})
            for (unsigned bits = 0; bits != 256; ++bits) {
                auto const options = static_cast<option>(bits);
                std::filesystem::remove_all("to");
                std::filesystem::remove("elsewhere");
                if (to == target::old_file) file(u"to", "old", 999);
                if (to == target::new_file) file(u"to", "new", 1000);
                if (to == target::directory) scratch.make({"to/"}), file(u"to/f", "old", 999);
                if (to == target::dangling) scratch.make({"to -> elsewhere"});
                auto const [outcome, after] = rules{source, to, options, state(u"to")}.expected();
                SCOPED_TRACE(utf8(source) + ' ' + std::to_string(bits));
                EXPECT_OUTCOME(copy(source, u"to", options), outcome);
                ASSERT_EQ(state(u"to"), after) << static_cast<int>(to);
            }
}

TEST_F(Copy, ReportsThePathAtFault) {
    std::string const bad_link = "InvalidArgument \"Target of the symbolic link does not exist\"";
    std::string const missing = "PathNotFound [missing]",
                      unsupported = "SystemError [f] [p] ENOSYS";
    scratch.make({"f", "g", "d/", "bad -> \xFF", "p|"});
    expect(LIFT(copy), row(u"", u"f", no_path), row(u"f", u"", no_path),
           row(u"bad", u"x", bad_link), row(u"f//", u"g//", "FileExistsError [g]"),
           row(std::u16string(u"f\0", 2), u"x", "InvalidArgument \"\" [f\\0]"));
    // Failures from Boost have the low bytes of the paths.
    expect(LIFT(copy_file), row(u"", u"f", no_path), row(u"missing//", u"x", missing),
           row(u"m\u6F22\u00E9", u"x", "PathNotFound [m\"\uFFFD]"),
           row(u"f//", u"g//", "FileExistsError [g]"),
           row(u"d", u"x", "SystemError [d] [x] ENOSYS"),
           row(u"p", u"x", "SystemError [p] [x] ENOSYS"), row(u"f", u"p", "FileExistsError [p]"));
    expect(WITH(copy_file, overwrite), row(u"f", u"d", "FileIsDirectory [f]"),
           row(u"f", u"p", unsupported));
    expect(WITH(copy_file, update), row(u"missing", u"g", missing), row(u"f", u"p", unsupported));
    expect(LIFT(copy_directory), row(u"f", u"", no_path), row(u"missing//", u"x", missing),
           row(u"d//", u"f//", "FileExistsError [f]"));
    expect(WITH(copy, recursive), row(u"d", u"x" + std::u16string(1, 0xD800), "PathNotFound"));
    expect(WITH(copy, overwrite | skip), row(u"missing", u"x", rejected));
    expect(WITH(copy_file, overwrite | skip), row(u"missing", u"x", rejected));
    must(::chmod("d", 0555) == 0 && ::chmod("g", 0) == 0);
    as_unprivileged_child([&] {
        expect(LIFT(copy_file), row(u"f", u"d/x", "AccessDenied [d/x]"),
               row(u"g", u"d/x", "AccessDenied [g]"));
    });
}

TEST_F(Copy, RefusesToOverwriteAFileWithItself) {
    scratch.make({"f: precious", "link -> f"});
    must(::link("f", "hard") == 0);
    for (std::u16string const name : {u"f", u"hard", u"link"}) {
        std::string const refused = "FileExistsError [" + utf8(name) + "]";
        expect(WITH(copy_file, overwrite), row(u"f", name, refused));
        expect(WITH(copy, overwrite), row(u"f", name, refused));
        EXPECT_OUTCOME(copy_file(name, u"f", update), "ok");
        EXPECT_EQ(scratch.content(u"f"), "precious");
    }
}

TEST_F(Copy, UpdateComparesTheFilesThatItCopies) {
    environment_guard const home("HOME", scratch.path8().c_str());  // not to be compared
    upath const tilde(u"~", false), other(u"other");
    for (bool const to_tilde : {true, false}) {
        upath const& from = to_tilde ? other : tilde;
        upath const& to = to_tilde ? tilde : other;
        file(from.native().c_str(), "old", 1000);
        file(to.native().c_str(), "new", 1'000'000'000);
        EXPECT_OUTCOME(copy_file(from, to, update), "ok");
        EXPECT_EQ(scratch.content(to.native()), "new");
    }
}

TEST_F(Copy, CopiesBytesAndPermissions) {
    std::string bytes;
    for (unsigned i = 0; i < 300'000; ++i) bytes += static_cast<char>(i * i >> 3);
    scratch.make({"f: " + bytes});
    must(::chmod("f", 0640) == 0);
    expect(WITH(copy_file, overwrite), row(u".//f", u"\u6F22", "ok"));
    EXPECT_EQ(scratch.content(u"\u6F22"), bytes);
    EXPECT_EQ(status(u"\u6F22").permissions, 0640u);
    must(::mkdir("d", 0700) == 0 && ::chmod("d", 0750) == 0);
    expect(LIFT(copy_directory), row(u"d", u"made", "ok"));  // for the path it exists: no error
    EXPECT_EQ(status(u"made").permissions, 0750u);
}

TEST_F(Copy, SymlinkKeepsTheTextOfTheLink) {
    environment_guard const home("HOME", scratch.path8().c_str());
    scratch.make({"l -> ~/x//y", "f"});
    EXPECT_OUTCOME(copy_symlink(u"l", u"copy"), "ok");
    EXPECT_OUTCOME(copy_symlink(upath(u"~/l"), upath(u"~/other")), "ok");
    EXPECT_EQ(state(u"copy") + state(u"other"), "link ~/x//ylink ~/x//y");
    EXPECT_OUTCOME(copy_symlink(u"~/l", u"x"), "PathNotFound");  // no native form, so no expansion
    std::string const not_a_link = "InvalidArgument \"Non-symbolic link file is not permitted\"";
    expect(LIFT(copy_symlink), row(u"f", u"x", not_a_link), row(u"l", u"f", "FileExistsError"),
           row(u"l", u"l", "FileExistsError [~/x//y]"));
}

TEST_F(Copy, RefusesToCopyATreeIntoItself) {
    scratch.make({"d/", "d/sub/", "d/f", "to d -> d", "to sub -> d/sub"});
    auto const tree = WITH(copy, recursive | overwrite);
    for (std::u16string const to :
         {u"d", u"d/sub", u"d/x/y", u"to sub", u"to sub/x", u"to d/./x", u"x/../d/y",
          u"x/../to d/y", u"d/sub/../sub/x", u"d/x/../../d/y", u"./d/x"}) {
        expect(tree, row(u"d", to, "InvalidArgument \"\" [d] [" + utf8(to) + "]"));
        EXPECT_EQ(std::distance(std::filesystem::recursive_directory_iterator("d"), {}), 2);
    }
    expect(tree, row(u"d", u"d/../e", "ok"), row(u"d", u"dd", "ok"),
           row(u"d", u"x/y/../../e2", "ok"), row(u"d/sub", u"d/e", "ok"));
    scratch.make({"z/", "z/sub -> ../d/sub"});  // below the target, a link to what is copied there
    expect(tree, row(u"d", u"z", "InvalidArgument \"\" [d/sub] [z/sub]"));
    // A link's text is looked up as a name, but its tilde is expanded when the directory is listed.
    environment_guard const home("HOME", scratch.path8().c_str());
    std::filesystem::create_directories("~/d");
    for (std::string const& back : {scratch.path8() + "/d", std::string("~/d")}) {
        scratch.make({"d/sub/back -> " + back});
        EXPECT_OUTCOME(copy(u"d", u"y", recursive), "SystemError [d/sub/back] ELOOP");
        for (char const* const name : {"d/sub/back", "y"}) std::filesystem::remove_all(name);
    }
    // Nor into what is above the target, is the target, or was made for it.
    scratch.make({"elsewhere/"});
    for (std::string const meets : {"elsewhere", "elsewhere/x", "elsewhere/x/y"}) {
        scratch.make({"d/out -> " + scratch.path8() + '/' + meets});
        EXPECT_OUTCOME(copy(u"d", u"elsewhere/x/y", recursive),
                       "InvalidArgument \"\" [@/" + meets + "] [elsewhere/x/y/out]");
        std::filesystem::remove_all("elsewhere/x");
        remove(u"d/out");
    }
}

TEST_F(Copy, WorksBelowAnOverlongWorkingDirectory) {
    for (std::size_t level = 1; level <= 400; ++level) {  // beyond PATH_MAX, on macOS four times
        must(::mkdir("ten-units.", 0755) == 0 && ::chdir("ten-units.") == 0);
        std::size_t const length = scratch.path8().size() + level * 11;
        EXPECT_TRUE(level != 150 || get_current_path().size() == length);
    }
    must(::mkdir("d", 0755) == 0 && ::mkdir("d/s", 0755) == 0);
    EXPECT_OUTCOME(copy(u"d", u"d/s/x", recursive), "InvalidArgument \"\" [d] [d/s/x]");
    EXPECT_OUTCOME(copy(u"d", u"x", recursive), "ok");
    EXPECT_EQ(status(u"x/s").type, file_status::directory_file);
}

TEST_F(Copy, KeepsSetIdBitsOnlyForTheSameOwner) {
    // The bits are dropped only from a copy of another user's file, which needs chown: POSIX lets
    // ordinary users give none of their files away.
    if (::getuid() != 0) GTEST_SKIP() << "needs root: POSIX lets others give no file away (chown)";
    for (unsigned const owner : {0u, 1000u}) {
        std::u16string const to = owner == 0 ? u"own" : u"foreign";
        file(u"f", "");
        must(::chown("f", owner, owner) == 0 && ::chmod("f", 06755) == 0);
        copy_file(u"f", to);
        copy(u"f", to + u"2");
        for (std::u16string const& made : {to, to + u"2"})
            EXPECT_EQ(status(made).permissions, owner == 0 ? 06755u : 0755u);
    }
}

TEST_F(Copy, CallsItsObserverBeforeEachEntry) {
    scratch.make(
        {"t/", "t/\u00E9/", "t/\u00E9/d/", "t/a: 123", "t/\u00E9/\u6F22: 45", "t/l -> no/where"});
    constexpr auto tree = recursive | keep_links;
    std::vector<std::pair<std::u16string, std::u16string>> entries;
    std::uint64_t bytes = 0;
    copy(u"t", u"whole", tree, [&](copy_step const& step) {
        EXPECT_EQ(joined(step.entries, step.bytes), joined(entries.size(), bytes));
        EXPECT_EQ(step.what.type, symlink_status(step.from).type);
        entries.emplace_back(step.from, u"part" + step.to.substr(5));
        bytes += step.what.type == file_status::regular_file ? step.what.size : 0;
        return true;
    });
    EXPECT_EQ(joined(entries.size(), bytes), "6|5|");
    for (std::size_t last = 0; last != entries.size(); ++last) {
        auto const& [from, to] = entries[last];
        EXPECT_EQ(state(u"whole" + to.substr(4)), state(from));
        std::string const paths = "[" + utf8(from) + "] [" + utf8(to) + "]";
        auto const refuse = [=](copy_step const& step) { return step.entries != last; };
        EXPECT_OUTCOME(copy(u"t", u"part", tree, refuse), "SystemError " + paths + " ECANCELED");
        for (std::size_t i = 0; i != entries.size(); ++i)
            EXPECT_EQ(state(entries[i].second) != "nothing", i < last);
        std::filesystem::remove_all("part");
        auto const fail = [=](copy_step const& step) {
            return step.entries == last ? throw last : true;
        };
        EXPECT_THROW(copy(upath(u"t"), upath(u"part"), tree, fail), std::size_t);
        std::filesystem::remove_all("part");
    }
}

}  // namespace ko::filesystem::test_support::copy_test

#include "tour.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <ko/filesystem.hpp>

#include "inspect.hpp"
#include "report.hpp"

namespace kofs {

namespace fs = ko::filesystem;

namespace {

volatile std::sig_atomic_t caught_signal = 0;

/// Makes signals that would end the process end the tour instead, at its next step.
void catch_signals() {
    struct sigaction action {};
    action.sa_handler = [](int number) { caught_signal = number; };  // and no SA_RESTART
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) ::sigaction(signal, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);  // the output stream fails instead
}

struct interrupted : std::exception {};

/// A new directory in `parent`, removed with all its contents by the destructor.
class scratch_directory {
public:
    explicit scratch_directory(std::string const& parent) {
        // Absolute, since the tour changes the working directory; empty without a UTF-16 form.
        auto const place = fs::canonical(fs::upath::from_utf8(parent, /*expand_tilde=*/false));
        std::string path8 = (place / u"kofs-XXXXXX").string();
        if (place.empty() || ::mkdtemp(path8.data()) == nullptr)
            throw std::runtime_error("can't make a directory in " + parent);
        path_ = fs::upath::from_utf8(path8, /*expand_tilde=*/false);
    }
    scratch_directory(scratch_directory const&) = delete;
    scratch_directory& operator=(scratch_directory const&) = delete;
    ~scratch_directory() {
        try {
            fs::remove_all(path_);
        } catch (std::exception const& error) {
            std::cerr << "kofs: " << path_ << " is left behind: " << error.what() << '\n';
        }
    }

    fs::upath const& path() const noexcept { return path_; }

private:
    fs::upath path_;
};

/// A writable directory on another file system than `path8`, if there is one.
std::optional<std::string> other_file_system(std::string const& path8) {
    struct stat here;
    struct stat there;
    if (::stat(path8.c_str(), &here) != 0) return std::nullopt;
    for (char const* const candidate : {"/dev/shm", "/tmp", "/var/tmp"})
        if (::stat(candidate, &there) == 0 && there.st_dev != here.st_dev &&
            ::access(candidate, W_OK) == 0)
            return candidate;
    return std::nullopt;
}

std::string text(bool yes) { return yes ? "yes" : "no"; }
std::string text(std::u16string const& result) { return shown(result); }
std::string text(fs::upath const& result) { return shown(result.native()); }

/// Runs the steps, prints their results, and counts them.
class guide {
public:
    /// A step with a result, or with none.
    template <class Action>
    void show(std::string const& what, Action action) {
        begin(what);
        try {
            if constexpr (std::is_void_v<decltype(action())>) {
                action();
                std::cout << '\n';
            } else {
                auto const result = action();
                std::cout << "  ->  " << text(result) << '\n';
                if constexpr (std::is_same_v<decltype(result), bool const>)
                    surprises_ += result ? 0 : 1;
            }
        } catch (fs::FsysExceptionBase const& error) {
            print(error);
            ++surprises_;
        }
    }

    /// A step that must fail, to show what failures look like.
    template <class Action>
    void show_failure(std::string const& what, Action action) {
        begin(what);
        try {
            action();
            std::cout << "\n  unexpectedly succeeded\n";
            ++surprises_;
        } catch (fs::FsysExceptionBase const& error) {
            print(error);
        }
    }

    int steps() const noexcept { return steps_; }
    int surprises() const noexcept { return surprises_; }

private:
    static void print(fs::FsysExceptionBase const& error) {
        std::string const& id = error.message_id();
        std::cout << "\n  " << id.substr(id.rfind(':') + 1) << ": " << fs::describe(error) << '\n';
    }

    void begin(std::string const& what) {
        if (caught_signal != 0 || !std::cout) throw interrupted();
        ++steps_;
        std::cout << what;
    }

    int steps_ = 0;
    int surprises_ = 0;
};

void heading(char const* text) { std::cout << "\n# " << text << "\n\n"; }

void show_this_machine() {
    heading("Paths of this machine");
    for (char16_t const* const path : {u"~", u"//etc///passwd", u"/usr/share/", u"/bin/sh"}) {
        print_status(std::cout, path);
        std::cout << '\n';
    }
}

void show_tree(guide& g, fs::upath const& tree) {
    heading("Making a small tree");
    auto const folder = tree / u"\u00DCbersicht";
    auto const file = folder / u"\u5831\u544A 2024.txt";
    g.show("create_directories " + text(folder), [&] { fs::create_directories(folder); });
    g.show("create_directory " + text(tree / u"leer"),
           [&] { fs::create_directory(tree / u"leer"); });
    std::ofstream(file.string()) << "twelve bytes";
    g.show("create_symlink " + text(tree / u"link"),
           [&] { fs::create_symlink(file, tree / u"link"); });
    g.show("create_symlink " + text(tree / u"dangling"),
           [&] { fs::create_symlink(u"nowhere", (tree / u"dangling").native()); });

    g.show("create_hard_link", [&] { fs::create_hard_link(file, tree / u"other name"); });
    g.show("resize_file, from 12 bytes to 5", [&] { fs::resize_file(tree / u"other name", 5); });
    g.show("last_write_time, set to a day in 1969", [&] {
        boost::posix_time::ptime const moon(boost::gregorian::date(1969, 7, 20));
        fs::last_write_time(file, moon);
        return fs::last_write_time(tree / u"other name") == moon;
    });
    g.show("ensure_directories, which exist", [&] { fs::ensure_directories(folder); });

    heading("Querying it");
    for (fs::upath const& p :
         {file, tree / u"link", tree / u"dangling", tree / u"missing.tar.gz"}) {
        print_status(std::cout, p.native());
        std::cout << '\n';
    }
    g.show("exists, the file", [&] { return fs::exists(file); });
    g.show("access, the file, to write", [&] { return fs::access(file, fs::access_write); });
    g.show("permissions, less all of the others'", [&] {
        fs::permissions(file, fs::file_status::others_all | fs::file_status::perms_remove);
        return fs::detail::from_filesystem(rwx(fs::status(file).permissions));
    });
    g.show("status_express_light, its size", [&] {
        return fs::detail::from_filesystem(
            std::to_string(fs::status_express_light(file.native()).size) + " bytes");
    });
    g.show("symlink_status, the link is one", [&] {
        return fs::symlink_status(tree / u"link").type == fs::file_status::symlink_file;
    });
    g.show("read_symlink", [&] { return fs::read_symlink(tree / u"link"); });
    g.show("equivalent, the link and the file",
           [&] { return fs::equivalent(tree / u"link", file); });
    g.show("hard_link_count, two names", [&] { return fs::hard_link_count(file) == 2; });
    g.show("is_directory, is_regular_file and is_symlink", [&] {
        return fs::is_directory(folder) && fs::is_regular_file(file) &&
               fs::is_symlink(tree / u"dangling");
    });
    g.show("recursive_directory_iterator, the files and their bytes", [&] {
        std::uint64_t files = 0, bytes = 0;
        for (fs::directory_entry const& entry : fs::recursive_directory_iterator(tree))
            if (!entry.is_symlink() && entry.is_regular_file()) ++files, bytes += entry.file_size();
        return fs::detail::from_filesystem(std::to_string(files) + ", " + std::to_string(bytes));
    });
    g.show("space, at least a byte is free", [&] { return fs::space(tree).free > 0; });
}

void show_paths(guide& g, fs::upath const& tree) {
    heading("Where things are");
    std::u16string before;
    g.show("get_current_path", [&] { return before = fs::get_current_path(); });
    g.show("change_current_path " + text(tree), [&] { return fs::change_current_path(tree); });
    g.show("absolute a/../b", [] { return fs::absolute(u"a/../b"); });
    g.show("canonical link", [] { return fs::canonical(u"link"); });
    g.show("weakly_canonical leer/missing/../x",
           [] { return fs::weakly_canonical(u"leer/missing/../x"); });
    g.show("relative /usr/share from here", [] { return fs::relative(u"/usr/share"); });
    g.show("get_unc_path link", [] { return fs::get_unc_path(u"link", false); });
    g.show("change_current_path, back", [&] { return fs::change_current_path(before); });
}

void show_copies(guide& g, fs::upath const& scratch, fs::upath const& tree) {
    using fs::copy_option;
    heading("Copying, moving and removing it");
    auto const copy = scratch / u"Kopie";
    g.show("copy, recursive, links as links",
           [&] { fs::copy(tree, copy, copy_option::recursive | copy_option::copy_symlinks); });
    g.show("copy, ended by its observer before the third entry", [&] {
        try {
            fs::copy(tree, scratch / u"part", copy_option::recursive | copy_option::copy_symlinks,
                     [](fs::copy_step const& step) { return step.entries < 2; });
        } catch (fs::SystemError const& error) {
            return error.system_error_number() == ECANCELED;
        }
        return false;
    });
    g.show("copy_file, through the link", [&] { fs::copy_file(tree / u"link", copy / u"f.txt"); });
    g.show("copy_file, update: already up to date",
           [&] { fs::copy_file(tree / u"link", copy / u"f.txt", copy_option::update_existing); });
    g.show("copy_directory", [&] { fs::copy_directory(tree, copy / u"leer too"); });
    g.show("copy_symlink", [&] { fs::copy_symlink(tree / u"dangling", copy / u"d"); });
    g.show("rename", [&] { fs::rename(copy, scratch / u"moved"); });
    if (auto const elsewhere = other_file_system(scratch.string())) {
        scratch_directory const other(*elsewhere);
        auto const there = other.path() / u"moved";
        fs::rename_options options;
        options.preserve_last_write_time = 1;
        auto const written = fs::status(scratch / u"moved/f.txt").last_write_time;
        g.show("rename, to " + *elsewhere + ", times kept", [&] {
            // Not the links: the times of their targets would be set instead.
            fs::remove(scratch / u"moved/link");
            fs::rename(scratch / u"moved", there, options);
            return fs::status(there / u"f.txt").last_write_time == written;
        });
        g.show("rename, back", [&] { fs::rename(there, scratch / u"moved"); });
    }
    auto const moved = scratch / u"moved";
    g.show("remove_file", [&] { fs::remove_file(moved / u"f.txt"); });
    g.show("remove_symlink", [&] { fs::remove_symlink(moved / u"d"); });
    g.show("remove_directory", [&] { fs::remove_directory(moved / u"leer too"); });
    g.show("remove", [&] { fs::remove(moved / u"leer"); });
    g.show("remove_if_exists, twice", [&] {
        fs::remove_if_exists(moved / u"other name");
        fs::remove_if_exists(moved / u"other name");
    });
    g.show("remove, as a file",
           [&] { fs::remove(moved / u"dangling", fs::file_status::symlink_file); });
    g.show("remove_all", [&] { fs::remove_all(moved); });
}

void show_failures(guide& g, fs::upath const& scratch, fs::upath const& tree) {
    heading("What failures look like");
    g.show_failure("status, below a regular file",
                   [] { static_cast<void>(fs::status(u"/etc/passwd/x")); });
    g.show_failure("canonical, a missing path", [] { fs::canonical(u"/no/such/path"); });
    g.show_failure("remove_directory, with something in it", [&] { fs::remove_directory(tree); });
    g.show_failure("create_directory, a name beyond the limit",
                   [&] { fs::create_directory(scratch / std::u16string(300, u'n')); });
    g.show_failure("copy, a directory into itself",
                   [&] { fs::copy(tree, tree / u"inside", fs::copy_option::recursive); });
    g.show_failure("rename, a directory into itself", [&] { fs::rename(tree, tree / u"inside"); });
    g.show_failure("access, without a path", [] { fs::access(u"", fs::access_read); });
    g.show_failure("read_symlink, of a file", [] { fs::read_symlink(u"/etc/passwd"); });
    g.show_failure("create_shortcut", [] { fs::create_shortcut(u"a", u"b"); });
}

std::string temporary_directory() {
    char const* const set = std::getenv("TMPDIR");
    return set != nullptr && *set != '\0' ? set : "/tmp";
}

}  // namespace

int tour() try {
    catch_signals();
    ::umask(022);  // what is made here must be removable
    guide g;
    scratch_directory const scratch(temporary_directory());
    fs::upath const& root = scratch.path();
    auto const tree = root / u"Baum";
    show_this_machine();
    show_tree(g, tree);
    show_paths(g, tree);
    show_copies(g, root, tree);
    show_failures(g, root, tree);
    std::cout << '\n' << g.steps() << " steps done, " << g.surprises() << " not as expected\n";
    return g.surprises() == 0 && std::cout ? EXIT_SUCCESS : EXIT_FAILURE;
} catch (interrupted const&) {
    std::cout << "\ninterrupted\n";
    return caught_signal != 0 ? 128 + caught_signal : EXIT_FAILURE;
}

}  // namespace kofs

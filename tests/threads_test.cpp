// Many threads at once, each test also under ThreadSanitizer.

#include <gtest/gtest.h>

#include <atomic>
#include <exception>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <ko/filesystem.hpp>

#include "support/files.hpp"

namespace ko::filesystem {
namespace {

class Threads : public testing::scratch_test {
protected:
    /// Runs `action` with the number of the thread on so many at once.
    template <class Action>
    static void on_threads(int count, Action action) {
        std::vector<std::thread> threads;
        for (int i = 0; i < count; ++i) threads.emplace_back(action, i);
        for (std::thread& thread : threads) thread.join();
    }
};

TEST_F(Threads, ThatChangeTheWorkingDirectoryAndReadIt) {
    std::u16string const places[] = {scratch.directory(u"d"), scratch.directory(u"e")};
    std::atomic<int> strangers{0};
    change_current_path(places[0]);
    on_threads(4, [&](int number) {
        for (int i = 0; i < 200; ++i) {
            if (number == 0) change_current_path(places[i % 2]);
            std::u16string const read = get_current_path(), made = absolute(u"x");
            if (read != places[0] && read != places[1]) ++strangers;
            if (made != places[0] + u"/x" && made != places[1] + u"/x") ++strangers;
        }
    });
    EXPECT_EQ(strangers, 0);
}

TEST_F(Threads, ThatMakeAndRemoveTheSameDirectories) {
    std::atomic<int> made{0};
    for (int round = 0; round < 50; ++round) {
        on_threads(4, [&](int) { made += ensure_directories(u"a/b/c") ? 1 : 0; });
        on_threads(4, [&](int) { made += remove_if_exists(u"a/b/c") ? 1 : 0; });
        remove_all(u"a");
    }
    EXPECT_EQ(made, 100) << "each by one thread";
}

TEST_F(Threads, ThatCopyAndRemoveTheSameTree) {
    constexpr auto options = copy_option::recursive | copy_option::overwrite_if_exists;
    std::u16string const tree = scratch.directory(u"tree"), target = scratch / u"target";
    for (char16_t name = u'a'; name < u'f'; ++name) {
        std::u16string const dir = std::u16string(u"tree/\u6F22") + name;
        scratch.directory(dir);
        for (char16_t file = u'a'; file < u'f'; ++file) scratch.file(dir + u"/f" + file, "content");
    }
    std::atomic<int> strangers{0}, succeeded{0};
    on_threads(4, [&](int number) {
        for (int i = 0; i < 25; ++i) {
            try {
                if (number % 2 == 0)
                    copy(tree, target, options);
                else
                    remove_all(target);
                ++succeeded;
            } catch (FsysExceptionBase const&) {     // the other threads' doing
            } catch (std::exception const& error) {  // as the directory's listing tells it
                if (std::string(error.what()).find("directory_iterator") == std::string::npos)
                    ++strangers;
            }
        }
    });
    EXPECT_EQ(strangers, 0);
    EXPECT_GT(succeeded, 0);
    if (exists(target)) remove_all(target);
    copy(tree, target, options);
    std::ptrdiff_t entries = 0;
    for (auto const& entry : std::filesystem::recursive_directory_iterator("target")) {
        ++entries;
        EXPECT_TRUE(entry.is_directory() || entry.file_size() == 7) << entry;
    }
    EXPECT_EQ(entries, 30);
}

}  // namespace
}  // namespace ko::filesystem

// Deep trees, and many threads.

#include <sys/resource.h>

#include <atomic>

#include "support/outcome.hpp"

namespace ko::filesystem::test_support::limits_test {

class Limits : public scratch_test {};

// A removal and a listing hold one descriptor for each level.
TEST_F(Limits, OfATreesDepth) {
    std::u16string path = u"deep";
    for (int level = 0; level < 200; ++level) path += u"/d";
    create_directories(path);
    auto const copy_deep = [](void*) -> void* {
        copy(u"deep", u"copy", copy_option::recursive);
        return nullptr;
    };
    pthread_attr_t small;
    pthread_t thread{};
    must(::pthread_attr_init(&small) == 0 && ::pthread_attr_setstacksize(&small, 128 * 1024) == 0 &&
         ::pthread_create(&thread, &small, copy_deep, nullptr) == 0);
    ::pthread_join(thread, nullptr);
    EXPECT_TRUE(is_directory(u"copy" + path.substr(4)));
    as_unprivileged_child([&] {
        ::rlimit const few{100, 100};
        must(::setrlimit(RLIMIT_NOFILE, &few) == 0);
        int const last = ::dup(0);
        recursive_directory_iterator it(scratch / u"deep");  // stays alive, with nothing open
        for (std::string const& outcome :
             {outcome(scratch.path8(), [&] { remove_all(scratch / u"deep"); }),
              outcome(scratch.path8(), [&] { std::advance(it, 200); })}) {
            EXPECT_EQ(outcome.rfind("SystemError [@/deep/d/d", 0), 0u) << outcome;
            EXPECT_EQ(outcome.substr(outcome.size() - 7), " EMFILE") << outcome;
        }
        EXPECT_EQ(::dup(0), last + 1) << "a descriptor is left open";
    });
    EXPECT_OUTCOME(remove_all(scratch / u"deep"), "ok");
}

TEST_F(Limits, OfThreadsThatCopyAndRemoveOneTree) {
    constexpr auto options = copy_option::recursive | copy_option::overwrite_if_exists;
    std::u16string const tree = scratch / u"tree", target = scratch / u"target";
    for (char16_t name = u'a'; name < u'z'; ++name) {
        std::u16string const dir = std::u16string(u"tree/\u6F22") + u"abcde"[name % 5];
        ensure_directories(dir);
        scratch.file(dir + u'/' + name, "content");
    }
    std::atomic<int> strangers{0};
    auto const work = [&](int number) {
        for (int i = 0; i < 25; ++i) {
            std::string const result = outcome("", [&] {
                number % 2 == 0 ? copy(tree, target, options) : remove_all(target);
            });  // a failure caused by the other threads, or from Boost's iterator
            bool const is_foreign = result.rfind("std: ", 0) == 0;
            if (is_foreign && result.find("directory_iterator") == result.npos) ++strangers;
        }
    };
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) threads.emplace_back(work, number);
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(strangers, 0);
    EXPECT_OUTCOME(copy(tree, target, options), "ok");
}

}  // namespace ko::filesystem::test_support::limits_test

#include <fcntl.h>

#include <filesystem>
#include <fstream>
#include <string>

#include <boost/filesystem/operations.hpp>

#include <ko/filesystem.hpp>

#include "job.hpp"
#include "plain_posix.hpp"

namespace ko_bench {

namespace {

namespace fs = ko::filesystem;
namespace std_fs = std::filesystem;
namespace boost_fs = boost::filesystem;

/// 200 directories with ten files in each; the names of a third of the directories and of half of
/// the files aren't ASCII.
void make_tree(std::u16string const& tree) {
    for (int dir = 0; dir < 200; ++dir) {
        std::u16string const name = (dir % 3 == 0 ? u"/\u5831\u544A" : u"/folder") +
                                    fs::detail::from_filesystem(std::to_string(dir));
        fs::create_directories(tree + name);
        for (char16_t file = u'a'; file < u'k'; ++file)
            std::ofstream(
                fs::upath(tree + name + u"/" + file + (dir % 2 == 0 ? u"\u00E9" : u"x")).string())
                << "x";
    }
}

/// The sum of the lengths and types of all paths in the tree.
template <class Iterator, class Measure>
std::size_t sum_of(Iterator all, Measure measure) {
    std::size_t sum = 0;
    for (auto const& entry : all) sum += measure(entry);
    return sum;
}

std::size_t list_by_ko(std::u16string const& tree) {
    return sum_of(fs::recursive_directory_iterator(tree), [](fs::directory_entry const& entry) {
        return entry.path().native().size() +
               (entry.type() == fs::file_status::directory_file ? 1 : 0);
    });
}

std::size_t list_by_std(std::u16string const& tree) {
    return sum_of(std_fs::recursive_directory_iterator(tree), [](auto const& entry) {
        return entry.path().u16string().size() + (entry.is_directory() ? 1 : 0);
    });
}

std::size_t sizes_by_ko(std::u16string const& tree) {
    fs::recursive_directory_iterator const all(tree, fs::directory_option::read_status);
    return sum_of(all, [](fs::directory_entry const& entry) {
        return entry.is_regular_file() ? entry.file_size() : 0;
    });
}

std::size_t sizes_by_std(std::u16string const& tree) {
    return sum_of(std_fs::recursive_directory_iterator(tree), [](auto const& entry) {
        return entry.is_regular_file() ? entry.file_size() : 0;
    });
}

std::size_t sizes_by_boost(std::u16string const& tree) {
    return sum_of(boost_fs::recursive_directory_iterator(boost_path(tree)), [](auto const& entry) {
        bool const is_file = entry.symlink_status().type() == boost_fs::regular_file;
        return is_file ? boost_fs::file_size(entry.path()) : 0;
    });
}

std::size_t list_by_boost(std::u16string const& tree) {
    using boost::locale::conv::utf_to_utf;
    return sum_of(boost_fs::recursive_directory_iterator(boost_path(tree)), [](auto const& entry) {
        bool const is_directory = entry.symlink_status().type() == boost_fs::directory_file;
        return utf_to_utf<char16_t>(entry.path().native()).size() + (is_directory ? 1 : 0);
    });
}

}  // namespace

void add_tree_jobs(std::u16string const& scratch) {
    std::u16string const tree = scratch + u"/tree", copied = scratch + u"/copied";
    std::string const tree8 = fs::upath(tree).string(), copied8 = fs::upath(copied).string();
    make_tree(tree);
    std::size_t const sum = list_by_ko(tree);
    job("list a tree of 2,000 files", sum == list_by_std(tree) && sum == list_by_boost(tree))
        .target(1.33)
        .large()
        .ko([=] { return list_by_ko(tree); })
        .std([=] { return list_by_std(tree); })
        .boost([=] { return list_by_boost(tree); })
        .limit([=] {
            std::string dir = tree8;
            return plain::list_tree(dir);
        });
    std::size_t const bytes = sizes_by_ko(tree);
    job("sizes of a tree of 2,000 files",
        bytes == 2000 && bytes == sizes_by_std(tree) && bytes == sizes_by_boost(tree))
        .target(1.25)
        .large()
        .ko([=] { return sizes_by_ko(tree); })
        .std([=] { return sizes_by_std(tree); })
        .boost([=] { return sizes_by_boost(tree); })
        .limit([=] {
            std::string dir = tree8;
            return plain::sizes_in_tree(dir);
        });
    constexpr auto options = fs::copy_option::recursive | fs::copy_option::copy_symlinks;
    constexpr auto std_options =
        std_fs::copy_options::recursive | std_fs::copy_options::copy_symlinks;
    auto const all_there = [=] {
        fs::copy(tree, copied, options);
        return std::distance(std_fs::recursive_directory_iterator(copied8), {}) == 2200;
    };
    job("copy a tree of 2,000 files", all_there())
        .target(1.05)
        .large()
        .before([=] { std_fs::remove_all(copied8); })
        .ko([=] { fs::copy(tree, copied, options); })
        .std([=] { std_fs::copy(tree, copied, std_options); })
        .boost([=] {
            boost_fs::copy(
                boost_path(tree), boost_path(copied),
                boost_fs::copy_options::recursive | boost_fs::copy_options::copy_symlinks);
        })
        .limit([=] {
            std::string from = tree8, to = copied8;
            plain::copy_tree(from, to);
        });
    fs::remove_all(copied);
    job("remove a tree of 2,000 files", !fs::exists(copied))
        .target(1.02)
        .large()
        .before([=] {
            std_fs::remove_all(copied8);
            std_fs::copy(tree8, copied8, std_options);
        })
        .ko([=] { fs::remove_all(copied); })
        .std([=] { std_fs::remove_all(copied); })
        .boost([=] { boost_fs::remove_all(boost_path(copied)); })
        .limit([=] {
            std::string dir = copied8;
            plain::remove_tree(dir);
        });
}

}  // namespace ko_bench

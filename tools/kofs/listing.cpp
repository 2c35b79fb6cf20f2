#include "listing.hpp"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string_view>
#include <utility>
#include <vector>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <nlohmann/json.hpp>

#include <ko/filesystem.hpp>

#include "columns.hpp"
#include "inspect.hpp"
#include "report.hpp"

namespace kofs {

namespace fs = ko::filesystem;

using fs::detail::to_filesystem;

namespace {

struct row {
    std::string path;
    std::uint32_t type = 0;
    fs::file_status status;
    std::string link;
};

/// One listing by the options.
class listing {
public:
    listing(arguments const& given, std::u16string const& path) : given_(given), path_(path) {
        depth_ = given.has("recursive") ? INT_MAX : 1;
        if (given.has("depth")) {
            std::string const& value = given.options.at("depth").back();
            bool const is_number = value.find_first_not_of("0123456789") == value.npos;
            depth_ = is_number && value.size() < 10 ? std::atoi(value.c_str()) : 0;
            if (depth_ == 0) throw usage_error("no number of levels: " + value);
        }
        if (given.has("sort")) order_ = given.options.at("sort").back();
        if (given.has("sort") && order_ != "name" && order_ != "size" && order_ != "time")
            throw usage_error("no order: " + order_);
        needs_status_ = is_long_ || order_ == "size" || order_ == "time";
    }

    int run() {
        auto options = fs::directory_option::none;
        if (given_.has("follow-links")) options |= fs::directory_option::follow_directory_symlinks;
        if (given_.has("skip-denied")) options |= fs::directory_option::skip_permission_denied;
        if (needs_status_) options |= fs::directory_option::read_status;
        auto const go_on = [this](fs::FsysExceptionBase const& error) { return fail(error); };
        fs::recursive_directory_iterator it(path_, options, go_on), end;
        for (; it != end; ++it) {
            if (it.depth() + 1 >= depth_) it.disable_recursion_pending();
            try {
                visit(*it);
            } catch (fs::FsysExceptionBase const& error) {
                fail(error);
            }
        }
        if (!order_.empty()) print_sorted();
        return status_;
    }

private:
    bool fail(std::exception const& error) {
        status_ = std::max(status_, report_failure(given_, error));
        return true;
    }

    void visit(fs::directory_entry const& entry) {
        row found = {entry.path().string(), entry.type(), {}, {}};
        if (needs_status_) found.status = entry.symlink_status();
        if (needs_status_ && found.status.type == fs::file_status::file_not_found)
            return;  // by now
        if (is_long_ && found.type == fs::file_status::symlink_file)
            found.link = to_filesystem(fs::read_symlink(entry.path().native()));  // no tilde
        if (order_.empty())
            print(found);
        else
            rows_.push_back(std::move(found));
    }

    /// A directory comes right before its contents.
    static bool is_before(std::string const& a, std::string const& b) {
        auto const rank = [](char each) {
            return each == '/' ? 0 : static_cast<unsigned char>(each) + 1;
        };
        return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                            [&](char x, char y) { return rank(x) < rank(y); });
    }

    void print_sorted() {
        std::sort(rows_.begin(), rows_.end(),
                  [](row const& a, row const& b) { return is_before(a.path, b.path); });
        auto const by = [&](auto key) {
            std::stable_sort(rows_.begin(), rows_.end(),
                             [&](row const& a, row const& b) { return key(a) > key(b); });
        };
        if (order_ == "size") by([](row const& each) { return size(each); });
        if (order_ == "time") by([](row const& each) { return each.status.last_write_time; });
        for (row const& each : rows_) width_ = std::max(width_, size_text(each).size());
        for (row const& each : rows_) print(each);
    }

    static std::uint64_t size(row const& of) {
        return of.type == fs::file_status::regular_file ? of.status.size : 0;
    }

    static std::string size_text(row const& of) {
        return of.type == fs::file_status::regular_file ? std::to_string(of.status.size) : "-";
    }

    void print(row const& found) {
        if (given_.json) {
            json answer = {{"path", found.path}, {"type", type_name(found.type)}};
            if (is_long_) answer.update(json_of(found.status));
            if (is_long_ && found.type == fs::file_status::symlink_file)
                answer["link"] = found.link;
            print_json(given_, "result", answer);
        } else if (is_long_) {
            std::string const size = size_text(found);
            width_ = std::max(width_, size.size());
            std::cout << type_letter(found.type) << rwx(found.status.permissions)
                      << std::string(width_ + 2 - size.size(), ' ') << size << "  "
                      << iso_seconds(found.status.last_write_time) << "  ";
            if (found.type == fs::file_status::symlink_file)
                std::cout << printed(fs::detail::from_filesystem(found.path)) << " -> ";
            print_path(given_,
                       found.type == fs::file_status::symlink_file ? found.link : found.path);
        } else {
            print_path(given_, found.path);
        }
    }

    arguments const& given_;
    std::u16string const& path_;
    bool const is_long_ = given_.has("long");
    bool needs_status_ = false;
    int depth_ = 1;
    std::string order_;
    std::vector<row> rows_;   ///< to be sorted
    std::size_t width_ = 10;  ///< of the sizes; grows if it has to
    int status_ = EXIT_SUCCESS;
};

}  // namespace

int list(arguments const& given, std::u16string const& path) { return listing(given, path).run(); }

}  // namespace kofs

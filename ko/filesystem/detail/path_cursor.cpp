#include <ko/filesystem/detail/path_cursor.hpp>

#include <algorithm>
#include <string_view>

#include <ko/filesystem/detail/path_algorithms.hpp>
#include <ko/filesystem/detail/path_constants.hpp>

namespace ko::filesystem::detail {

using traits = pathname_traits<char16_t>;

void move_down(std::u16string const& p, std::size_t root_length, std::size_t& position,
               std::u16string& element) {
    if (position >= p.size()) {
        element.clear();
        return;
    }
    if (element.size() >= p.size() - position) {
        position = p.size();
        element.clear();
        return;
    }
    bool const at_root = position == 0 && root_length != 0;
    std::size_t const step = at_root ? root_length : element.size() + 1;
    std::size_t const start = std::min(position + step, p.size());
    std::size_t const end = std::min(p.find(traits::PATHNAME_SEPARATOR_CHARACTER, start), p.size());
    element.assign(p, start, end - start);
    position = start;
}

void move_up(std::u16string const& p, std::size_t root_length, std::size_t& position,
             std::u16string& element) {
    if (position == 0) return;
    if (position == root_length) {
        element = traits::ROOT_PATHNAME;
        position = 0;
        return;
    }
    std::u16string_view const head =
        std::u16string_view(p).substr(0, position >= p.size() ? p.size() : position - 1);
    std::size_t const separator = algorithm::last_separator(head);
    std::size_t const start = separator == head.npos ? 0 : separator + 1;
    element.assign(head.substr(start));
    position = start;
}

}  // namespace ko::filesystem::detail

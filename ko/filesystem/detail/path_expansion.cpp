#include <ko/filesystem/detail/path_expansion.hpp>

#include <ko/filesystem/detail/path_algorithms.hpp>
#include <ko/filesystem/detail/path_constants.hpp>

namespace ko::filesystem::detail {

using traits = pathname_traits<char16_t>;

std::u16string make_expanded_path(std::u16string const& p, bool suppress_expansion) {
    return suppress_expansion ? p : traits::replace_tilde_with_home_dir(p);
}

bool is_absolute_path_when_expanded(std::u16string const& p, bool suppress_expansion) {
    if (suppress_expansion || !algorithm::begins_with_tilde<char16_t>(p))
        return algorithm::is_absolute<char16_t>(p);
    return algorithm::is_absolute<char16_t>(traits::replace_tilde_with_home_dir(p));
}

}  // namespace ko::filesystem::detail

#include <ko/filesystem/equivalent.hpp>

#include <cerrno>
#include <string>

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <boost/system/error_code.hpp>

#include <ko/filesystem/detail/error_mapping.hpp>
#include <ko/filesystem/posix/boost_error.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem {

namespace {

bool equivalent_impl(std::u16string const& a, std::u16string const& b) {
    if (a.empty()) detail::reject_empty_path(b);
    if (a.empty() || b.empty()) return false;
    detail::system_path const a8(a);
    detail::system_path const b8(b);
    if (a8.empty() && b8.empty()) detail::throw_errno_exception(ENOENT, {});
    if (a8.empty() || b8.empty()) return false;
    boost::system::error_code ec;
    bool const same = boost::filesystem::equivalent(a8.c_str(), b8.c_str(), ec);
    if (ec.failed()) detail::throw_copy_error_code_exception(ec.value(), a, b);
    return same;
}

}  // namespace

bool equivalent(upath const& a, upath const& b) { return equivalent_impl(a.native(), b.native()); }
bool equivalent(std::u16string const& a, std::u16string const& b) {
    return equivalent_impl(a, b);  // as given: no native form
}

}  // namespace ko::filesystem

#include <ko/filesystem/space.hpp>

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <boost/system/errc.hpp>
#include <boost/system/error_code.hpp>

#include <ko/filesystem/posix/boost_error.hpp>
#include <ko/filesystem/posix/native_text.hpp>
#include <ko/filesystem/posix/system_path.hpp>

namespace ko::filesystem {

space_info space(upath const& p) {
    detail::reject_empty_path(p.native());
    boost::system::error_code ec;
    detail::system_path const path8(p.native());
    auto found = boost::filesystem::space(path8.c_str(), ec);
    while (ec == boost::system::errc::interrupted)
        found = boost::filesystem::space(path8.c_str(), ec);
    if (ec.failed()) detail::throw_error_code_exception(ec.value(), p.native(), {});
    return {found.capacity, found.free, found.available};
}

}  // namespace ko::filesystem

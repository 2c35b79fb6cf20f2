#include <ko/filesystem/space.hpp>

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <boost/system/error_code.hpp>

#include <ko/filesystem/posix/boost_error.hpp>
#include <ko/filesystem/posix/native_text.hpp>

namespace ko::filesystem {

space_info space(upath const& p) {
    detail::reject_empty_path(p.native());
    boost::system::error_code ec;
    auto const found = boost::filesystem::space(detail::system_path(p.native()).c_str(), ec);
    if (ec.failed()) detail::throw_error_code_exception(ec, p.native(), {});
    return {found.capacity, found.free, found.available};
}

}  // namespace ko::filesystem

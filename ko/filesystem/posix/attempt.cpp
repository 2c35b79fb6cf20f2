#include <ko/filesystem/attempt.hpp>

#include <filesystem>

#include <boost/filesystem/exception.hpp>

#include <ko/filesystem/exceptions/fsys_exception_base.hpp>

namespace ko::filesystem::detail {

std::error_code caught_error() {
    std::error_code code;
    try {
        throw;
    } catch (FsysExceptionBase const& error) {
        code = error.code();
    } catch (std::filesystem::filesystem_error const& error) {
        code = error.code();
    } catch (boost::filesystem::filesystem_error const& error) {
        code = error.code();
    }
    // A failure must not look like a success.
    if (!code) throw;
    return code;
}

}  // namespace ko::filesystem::detail

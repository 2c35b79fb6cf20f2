// An application of the installed library: exceptions cross two shared libraries and are caught by
// their class, by their base, and after a capture.

#include <exception>
#include <string>

#include <boost/exception_ptr.hpp>

#include <ko/filesystem.hpp>

void ask_below_a_file();

template <class Caught>
bool is_caught_as(bool after_a_capture = false) {
    try {
        try {
            ask_below_a_file();
        } catch (...) {
            if (!after_a_capture) throw;
            boost::rethrow_exception(boost::current_exception());
        }
    } catch (Caught const& error) {
        return error.what() == std::string("ko:filesystem:NotDirectoryError");
    } catch (...) {
    }
    return false;
}

int main() {
    namespace fs = ko::filesystem;
    bool const succeeded =
        is_caught_as<fs::NotDirectoryError>() && is_caught_as<fs::FsysExceptionBase>() &&
        is_caught_as<std::exception>() && is_caught_as<fs::NotDirectoryError>(true) &&
        fs::exists(u"/") && fs::upath(u"/a//b/").filename() == u"b";
    return succeeded ? 0 : 1;
}

// What an application does with the installed library: its exceptions cross two borders of shared
// libraries and are caught by their class, by their base, and by a capture.

#include <exception>
#include <iostream>
#include <stdexcept>

#include <boost/exception_ptr.hpp>

#include <ko/filesystem.hpp>

void ask_below_a_file();

template <class Caught>
bool is_caught_as() {
    try {
        ask_below_a_file();
    } catch (Caught const& error) {
        return error.what() == std::string("ko:filesystem:NotDirectoryError");
    }
    return false;
}

int main() {
    namespace fs = ko::filesystem;
    bool succeeded = is_caught_as<fs::NotDirectoryError>() &&
                     is_caught_as<fs::FsysExceptionBase>() && is_caught_as<std::exception>();
    try {
        ask_below_a_file();
    } catch (...) {
        boost::exception_ptr const captured = boost::current_exception();
        try {
            boost::rethrow_exception(captured);
        } catch (fs::NotDirectoryError const& error) {
            succeeded = succeeded && error.path() == u"/etc/passwd/x";
        } catch (...) {
            succeeded = false;
        }
    }
    succeeded = succeeded && fs::exists(u"/") && fs::upath(u"/a//b/").filename() == u"b";
    std::cout << (succeeded ? "consumed" : "failed") << '\n';
    return succeeded ? 0 : 1;
}

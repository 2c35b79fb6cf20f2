// An application of the installed library: exceptions cross two shared libraries and are caught by
// their class, by their base, and after a capture.

#include <exception>
#include <iostream>
#include <string>

#include <boost/exception_ptr.hpp>

#include <ko/filesystem.hpp>

void ask_below_a_file();

template <class Caught>
bool is_caught_as(void (*thrower)()) {
    try {
        thrower();
    } catch (Caught const& error) {
        return error.what() == std::string("ko:filesystem:NotDirectoryError");
    } catch (...) {
    }
    return false;
}

void rethrow_a_capture() {
    try {
        ask_below_a_file();
    } catch (...) {
        boost::rethrow_exception(boost::current_exception());
    }
}

int main() {
    namespace fs = ko::filesystem;
    bool const succeeded = is_caught_as<fs::NotDirectoryError>(ask_below_a_file) &&
                           is_caught_as<fs::FsysExceptionBase>(ask_below_a_file) &&
                           is_caught_as<std::exception>(ask_below_a_file) &&
                           is_caught_as<fs::NotDirectoryError>(rethrow_a_capture) &&
                           fs::exists(u"/") && fs::upath(u"/a//b/").filename() == u"b";
    std::cout << (succeeded ? "consumed" : "failed") << '\n';
    return succeeded ? 0 : 1;
}

#include <iostream>

#include <ko/filesystem.hpp>

int main() {
    try {
        static_cast<void>(ko::filesystem::status(u"/etc/passwd/x"));
    } catch (ko::filesystem::NotDirectoryError const& error) {
        std::cout << error.what() << '\n';
        return ko::filesystem::exists(u"/") ? 0 : 1;
    }
    return 1;
}

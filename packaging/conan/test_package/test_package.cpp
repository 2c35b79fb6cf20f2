#include <iostream>

#include <ko/filesystem.hpp>

int main() {
    namespace fs = ko::filesystem;
    fs::upath const here(fs::get_current_path(), /*expand_tilde=*/false);
    std::cout << here << '\n';
    return fs::is_directory(here) ? 0 : 1;
}

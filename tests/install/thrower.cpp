#include <ko/filesystem.hpp>

// Another shared library than the one that catches.
[[gnu::visibility("default")]] void ask_below_a_file() {
    static_cast<void>(ko::filesystem::status_express_light(u"/etc/passwd/x"));
}

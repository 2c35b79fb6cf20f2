#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <string>

#include <ko/filesystem.hpp>

#include "job.hpp"

int ko_bench::with_all_jobs(std::function<bool(std::string const&)> const& run) noexcept try {
    std::string scratch8 = ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
    scratch8 += "/ko-bench-XXXXXX";
    if (::mkdtemp(scratch8.data()) == nullptr) return EXIT_FAILURE;
    std::u16string const scratch = ko::filesystem::detail::from_filesystem(scratch8);
    add_encoding_jobs();
    add_path_text_jobs();
    add_status_jobs(scratch);
    add_operation_jobs(scratch);
    add_tree_jobs(scratch);
    bool const succeeded = run(scratch8);
    ko::filesystem::remove_all(scratch);
    return succeeded ? EXIT_SUCCESS : EXIT_FAILURE;
} catch (std::exception const& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return EXIT_FAILURE;
}

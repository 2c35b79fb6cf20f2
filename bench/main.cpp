#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include <benchmark/benchmark.h>

#include <ko/filesystem.hpp>

#include "job.hpp"

int main(int argc, char** argv) try {
    std::string scratch8 = ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
    scratch8 += "/ko-bench-XXXXXX";
    if (::mkdtemp(scratch8.data()) == nullptr) return EXIT_FAILURE;
    std::u16string const scratch = ko::filesystem::detail::from_filesystem(scratch8);
    ko_bench::add_encoding_jobs();
    ko_bench::add_path_text_jobs();
    ko_bench::add_status_jobs(scratch);
    ko_bench::add_operation_jobs(scratch);
    benchmark::AddCustomContext("scratch", scratch8);
    benchmark::Initialize(&argc, argv);
    bool const understood = !benchmark::ReportUnrecognizedArguments(argc, argv);
    if (understood) benchmark::RunSpecifiedBenchmarks();
    ko::filesystem::remove_all(scratch);
    return understood ? EXIT_SUCCESS : EXIT_FAILURE;
} catch (std::exception const& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return EXIT_FAILURE;
}

#include <string>

#include <benchmark/benchmark.h>
#include <boost/version.hpp>

#include "job.hpp"

int main(int argc, char** argv) {
    return ko_bench::with_all_jobs([&](std::string const& scratch) {
        benchmark::AddCustomContext("scratch", scratch);
        benchmark::AddCustomContext("compiler", __VERSION__);
        benchmark::AddCustomContext("boost", BOOST_LIB_VERSION);
        benchmark::Initialize(&argc, argv);
        if (benchmark::ReportUnrecognizedArguments(argc, argv)) return false;
        benchmark::RunSpecifiedBenchmarks();
        return true;
    });
}

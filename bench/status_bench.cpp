// Status queries from UTF-16 text, beside std::filesystem on the same text and the system call
// alone.

#include <sys/stat.h>

#include <filesystem>
#include <string>

#include <benchmark/benchmark.h>

#include <ko/filesystem.hpp>

namespace {

namespace fs = ko::filesystem;

std::u16string ascii() { return u"/usr/share/doc/base-files/../base-files/../base-files"; }
std::u16string han() { return u"/tmp/" + std::u16string(25, u'\u6F22'); }

template <std::u16string (*Path)()>
void BM_StatusLimit(benchmark::State& state) {
    std::string const path = fs::detail::to_filesystem(Path());
    for (auto _ : state) {
        struct stat found;
        benchmark::DoNotOptimize(::stat(path.c_str(), &found));
    }
}

template <std::u16string (*Path)()>
void BM_StatusKo(benchmark::State& state) {
    std::u16string const path = Path();
    for (auto _ : state) benchmark::DoNotOptimize(fs::status(path));
}

template <std::u16string (*Path)()>
void BM_StatusStd(benchmark::State& state) {
    std::u16string const path = Path();
    for (auto _ : state) {
        std::error_code error;
        benchmark::DoNotOptimize(std::filesystem::status(path, error));
    }
}

template <std::u16string (*Path)()>
void BM_ToFilesystemKo(benchmark::State& state) {
    std::u16string const path = Path();
    for (auto _ : state) benchmark::DoNotOptimize(fs::detail::to_filesystem(path));
}

template <std::u16string (*Path)()>
void BM_NativeFormKo(benchmark::State& state) {
    std::u16string const path = Path();
    for (auto _ : state) benchmark::DoNotOptimize(fs::detail::make_native_form(path, true));
}

template <std::u16string (*Path)()>
void BM_CopyLimit(benchmark::State& state) {
    std::u16string const path = Path();
    for (auto _ : state) {
        std::u16string copy(path);
        benchmark::DoNotOptimize(copy);
    }
}

BENCHMARK(BM_StatusLimit<ascii>);
BENCHMARK(BM_StatusKo<ascii>);
BENCHMARK(BM_StatusStd<ascii>);
BENCHMARK(BM_StatusLimit<han>);
BENCHMARK(BM_StatusKo<han>);
BENCHMARK(BM_StatusStd<han>);
BENCHMARK(BM_CopyLimit<ascii>);
BENCHMARK(BM_NativeFormKo<ascii>);
BENCHMARK(BM_ToFilesystemKo<ascii>);
BENCHMARK(BM_ToFilesystemKo<han>);

}  // namespace

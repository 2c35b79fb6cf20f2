#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <type_traits>
#include <utility>

#include <benchmark/benchmark.h>
#include <boost/filesystem/path.hpp>
#include <boost/locale/encoding_utf.hpp>

#include <ko/filesystem.hpp>

namespace ko_bench {

/// One job, timed four ways in the same run, as "job/ko", "job/std", "job/boost" and "job/limit":
/// this library, its peers from the same UTF-16 text, and what can't be beaten.
class job {
public:
    /// Ends the program unless `answer_is_right`: what is timed must be what is meant.
    job(std::string name, bool answer_is_right) : name_(std::move(name)) {
        if (answer_is_right) return;
        std::fprintf(stderr, "%s: the answer is wrong\n", name_.c_str());
        std::exit(1);
    }

    template <class Action>
    job& ko(Action action) {
        return add("ko", action);
    }
    template <class Action>
    job& std(Action action) {
        return add("std", action);
    }
    template <class Action>
    job& boost(Action action) {
        return add("boost", action);
    }
    /// The system calls that the operation must make, on ready UTF-8; for text, a copy of it.
    template <class Action>
    job& limit(Action action) {
        return add("limit", action);
    }
    /// On that many threads at once, in the way added last.
    job& threads(int count) {
        last_->Threads(count)->UseRealTime();
        return *this;
    }

private:
    template <class Action>
    job& add(char const* way, Action action) {
        auto const run = [action](benchmark::State& state) {
            for (auto _ : state) {
                if constexpr (std::is_void_v<decltype(action())>)
                    action();
                else
                    benchmark::DoNotOptimize(action());
            }
        };
        last_ = benchmark::RegisterBenchmark((name_ + '/' + way).c_str(), run);
        return *this;
    }

    std::string name_;
    benchmark::internal::Benchmark* last_ = nullptr;
};

/// The path that a caller of Boost.Filesystem makes of UTF-16 text.
inline boost::filesystem::path boost_path(std::u16string const& text) {
    return boost::locale::conv::utf_to_utf<char>(text);
}

// Each family of jobs; `scratch` is an empty directory on a memory file system, where there is one.
void add_encoding_jobs();
void add_path_text_jobs();
void add_status_jobs(std::u16string const& scratch);
void add_operation_jobs(std::u16string const& scratch);

}  // namespace ko_bench

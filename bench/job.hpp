#pragma once

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <boost/filesystem/path.hpp>
#include <boost/locale/encoding_utf.hpp>

#include <ko/filesystem.hpp>

namespace ko_bench {

/// One way of doing one job, for the counting program.
struct counted_way {
    std::string job, way;
    std::function<void()> prepare, act;
    bool is_large;
};

inline std::vector<counted_way>& counted_ways() {
    static std::vector<counted_way> ways;
    return ways;
}

/// One job, done in several ways in the same run: "job/ko" by this library, "job/std" and
/// "job/boost" by its peers from the same UTF-16 text, "job/limit" by the minimum of work.
class job {
public:
    /// Terminates the program unless `answer_is_right`, so that only correct results are timed.
    job(std::string name, bool answer_is_right) : name_(std::move(name)) {
        if (answer_is_right) return;
        std::fprintf(stderr, "%s: the answer is wrong\n", name_.c_str());
        std::exit(1);
    }

    /// The target for the ratio to the limit.
    job& target(double ratio) {
        char text[16];
        std::snprintf(text, sizeof text, "%.2f", ratio);
        benchmark::AddCustomContext("target: " + name_, text);
        return *this;
    }
    /// Untimed preparation before each run of the following ways.
    job& before(std::function<void()> prepare) {
        prepare_ = std::move(prepare);
        return *this;
    }
    /// Too large to count its instructions, which needs single steps.
    job& large() {
        is_large_ = true;
        return *this;
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
    /// The system calls that the operation must make, on prepared UTF-8; for text, a copy of the
    /// result.
    template <class Action>
    job& limit(Action action) {
        return add("limit", action);
    }
    /// The limit and one bare iconv call for each path that isn't ASCII.
    template <class Action>
    job& floor(Action action) {
        return add("floor", action);
    }
    /// By simdutf, which does not replace malformed text.
    template <class Action>
    job& simdutf(Action action) {
        return add("simdutf", action);
    }
    /// By this library, on one, two and four concurrent threads.
    template <class Action>
    job& threads(Action action) {
        for (int const count : {1, 2, 4}) add("ko", action)->Threads(count)->UseRealTime();
        return *this;
    }

private:
    struct added {
        job* self;
        benchmark::internal::Benchmark* timed;
        operator job&() const { return *self; }
        benchmark::internal::Benchmark* operator->() const { return timed; }
    };

    template <class Action>
    added add(char const* way, Action action) {
        auto const act = [action] {
            if constexpr (std::is_void_v<decltype(action())>)
                action();
            else
                benchmark::DoNotOptimize(action());
        };
        auto const run = [act, prepare = prepare_](benchmark::State& state) {
            for (auto _ : state) {
                if (prepare) {
                    state.PauseTiming();
                    prepare();
                    state.ResumeTiming();
                }
                act();
            }
        };
        auto const prepare = prepare_ ? prepare_ : [] {};
        counted_ways().push_back({name_, way, prepare, act, is_large_});
        return {this, benchmark::RegisterBenchmark((name_ + '/' + way).c_str(), run)};
    }

    std::string name_;
    std::function<void()> prepare_;
    bool is_large_ = false;
};

/// The path for Boost.Filesystem from UTF-16 text.
inline boost::filesystem::path boost_path(std::u16string const& text) {
    return boost::locale::conv::utf_to_utf<char>(text);
}

/// Makes a scratch directory on a memory file system, if there is one, adds all jobs, and calls
/// `run` with the directory. Returns the exit status for `main`.
int with_all_jobs(std::function<bool(std::string const& scratch)> const& run) noexcept;

// The families of jobs; `scratch` is an empty directory.
void add_encoding_jobs();
void add_path_text_jobs();
void add_status_jobs(std::u16string const& scratch);
void add_operation_jobs(std::u16string const& scratch);
void add_tree_jobs(std::u16string const& scratch);

}  // namespace ko_bench

// Counts the costs of each way of each job that are the same in every run: calls of malloc and
// related functions (including those of operator new), system calls, and instructions in user mode.
// Prints them as lines of "job<TAB>way<TAB>allocations<TAB>calls<TAB>instructions", the last one
// empty for large jobs.

#include <signal.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "job.hpp"

namespace {

thread_local long allocations = 0;

}  // namespace

// The C library's own functions, so that this program can replace them.
extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);

void* malloc(std::size_t size) noexcept {
    ++allocations;
    return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) noexcept {
    ++allocations;
    return __libc_calloc(count, size);
}
void* realloc(void* memory, std::size_t size) noexcept {
    ++allocations;
    return __libc_realloc(memory, size);
}
}

namespace {

struct figures {
    long allocations, calls, instructions;
};

/// The activity of the process `child` between its next two stops by SIGSTOP, as the number of
/// stops when it is continued by `request`.
long count_stops(pid_t child, __ptrace_request request) {
    int status = 0;
    auto const stopped = [&] {
        return ::waitpid(child, &status, 0) == child && WIFSTOPPED(status);
    };
    while (stopped() && WSTOPSIG(status) != SIGSTOP) ::ptrace(PTRACE_CONT, child, 0, 0);
    long stops = 0;
    for (;; ++stops) {
        ::ptrace(request, child, 0, 0);
        if (!stopped() || WSTOPSIG(status) == SIGSTOP) break;
    }
    ::ptrace(PTRACE_CONT, child, 0, 0);
    return stops;
}

/// Runs `way` in a separate process.
figures count(ko_bench::counted_way const& way) {
    auto* const shared = static_cast<figures*>(::mmap(
        nullptr, sizeof(figures), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    pid_t const child = ::fork();
    if (child == 0) {
        ::ptrace(PTRACE_TRACEME, 0, 0, 0);
        auto const run_between_stops = [&] {
            way.prepare();
            ::raise(SIGSTOP);
            way.act();
            ::raise(SIGSTOP);
        };
        way.prepare();
        way.act();  // excludes the work of the first call only, such as opening a converter
        way.prepare();
        long const before = allocations;
        way.act();
        shared->allocations = allocations - before;
        run_between_stops();
        if (!way.is_large) run_between_stops();
        ::_exit(0);
    }
    figures counted{};
    counted.calls = count_stops(child, PTRACE_SYSCALL) / 2;  // it stops before and after each
    if (!way.is_large) counted.instructions = count_stops(child, PTRACE_SINGLESTEP);
    int status = 0;
    ::waitpid(child, &status, 0);
    counted.allocations = shared->allocations;
    ::munmap(shared, sizeof(figures));
    return counted;
}

}  // namespace

int main(int argc, char** argv) {
    std::string const wanted = argc > 1 ? argv[1] : "";
    return ko_bench::with_all_jobs([&](std::string const&) {
        figures const nothing = count({"", "", [] {}, [] {}, false});
        for (auto const& way : ko_bench::counted_ways()) {
            if (way.job.find(wanted) == std::string::npos) continue;
            figures const all = count(way);
            std::printf("%s\t%s\t%ld\t%ld\t", way.job.c_str(), way.way.c_str(), all.allocations,
                        all.calls - nothing.calls);
            if (!way.is_large) std::printf("%ld", all.instructions - nothing.instructions);
            std::printf("\n");
        }
        return true;
    });
}

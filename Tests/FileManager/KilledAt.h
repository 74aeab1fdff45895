#pragma once

#include "FileManager/FileCopy.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <random>
#include <sys/mman.h>
#include <sys/time.h>
#include <sys/wait.h>

namespace stemvault {

/// Decrements `callsLeft` at each call and kills this process just before the call that makes it 0.
template <typename Call> void killAtTheLast(int& callsLeft, Call& call)
{
    call = [&callsLeft, real = call](auto... arguments) {
        if (--callsLeft == 0)
            ::raise(SIGKILL);
        return real(arguments...);
    };
}

/// Runs `work` in a child process that is killed just before its system call number `call`.
/// Returns false if `work` finished first.
template <typename Work> bool isKilledAt(int call, SystemCalls& calls, const Work& work)
{
    const pid_t child = ::fork();
    if (child == 0) {
        killAtTheLast(call, calls.openat);
        killAtTheLast(call, calls.clone);
        killAtTheLast(call, calls.fallocate);
        killAtTheLast(call, calls.copyFileRange);
        killAtTheLast(call, calls.pwrite);
        killAtTheLast(call, calls.fsync);
        killAtTheLast(call, calls.close);
        killAtTheLast(call, calls.linkat);
        killAtTheLast(call, calls.renameat2);
        work();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status);
}

/// Runs the steps after `last` in a child process that is killed `moment` after its start.
/// Returns the last step that finished.
template <typename Step>
int lastStepBeforeKill(int last, std::chrono::nanoseconds moment, const Step& step)
{
    void* const shared =
        ::mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    auto* const done = new (shared) std::atomic<int>(last);
    const pid_t child = ::fork();
    if (child == 0) {
        // SIGALRM is not handled, so it ends the child as abruptly as SIGKILL.
        const auto microseconds = moment.count() / 1000;
        const itimerval due { {}, { microseconds / 1'000'000, microseconds % 1'000'000 + 1 } };
        if (::setitimer(ITIMER_REAL, &due, nullptr) != 0)
            ::_exit(1);
        for (;; ++*done)
            step(*done + 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    last = *done;
    ::munmap(shared, sizeof(int));
    return last;
}

/// Runs steps in child processes and kills `kills` of them at random moments, then one just before
/// each of its `calls` in turn. No finished step may be lost, and the result of an interrupted step
/// must be complete or absent: `found` returns the last step whose result is complete. Returns the
/// number of calls, plus one.
template <typename Step, typename Found>
int expectWholeWhenKilled(int kills, SystemCalls& calls, const Step& step, const Found& found)
{
    const auto start = std::chrono::steady_clock::now();
    step(1);
    const auto longest = 3 * (std::chrono::steady_clock::now() - start);
    std::mt19937 random(static_cast<unsigned>(kills));
    int last = 1;
    const auto isWhole = [&](int done) {
        last = found();
        EXPECT_TRUE(last == done || last == done + 1) << last << " instead of " << done;
        return !testing::Test::HasFailure();
    };
    while (
        kills-- > 0 && isWhole(lastStepBeforeKill(last, longest * (random() % 1000) / 1000, step)))
        ;
    int call = 1;
    while (isKilledAt(call, calls, [&] { step(last + 1); }) && isWhole(last))
        ++call;
    EXPECT_EQ(found(), last + 1);
    return call;
}

} // namespace stemvault

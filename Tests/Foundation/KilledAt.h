#pragma once

#include "Foundation/FileCopyOptions.h"

#include <csignal>
#include <sys/wait.h>

namespace stemvault {

/// Runs `work` in a child process that is killed right before the given one of its `calls`. False
/// if it came to its end before.
template <typename Work> bool isKilledAt(int call, SystemCalls& calls, const Work& work)
{
    const pid_t child = ::fork();
    if (child == 0) {
        const auto arm = [&call](auto&... targets) {
            const auto count = [&call] { return --call == 0 ? ::raise(SIGKILL) : 0; };
            ((targets = [=, real = targets](auto... given) { return count(), real(given...); }),
                ...);
        };
        arm(calls.openat, calls.clone, calls.fallocate, calls.copyFileRange, calls.pwrite);
        arm(calls.fsync, calls.linkat, calls.renameat2);
        work();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status);
}

} // namespace stemvault

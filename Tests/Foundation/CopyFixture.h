#pragma once

#include "Foundation/FileCopy.h"
#include "Foundation/FileDescriptor.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace stemvault {

using Refusal = std::function<void(SystemCalls&)>;

template <typename Call> Refusal no(Call SystemCalls::*call, int error)
{
    return [=](SystemCalls& calls) { calls.*call = [=](auto...) { return errno = error, -1; }; };
}

/// Refuses only the renames that carry one of the flags.
inline Refusal noRename(unsigned flags, int error)
{
    return [=](SystemCalls& calls) {
        calls.renameat2 = [=, real = calls.renameat2](
                              auto from, auto old, auto to, auto name, unsigned given) {
            return (given & flags) == 0 ? real(from, old, to, name, given) : (errno = error, -1);
        };
    };
}

inline void noUnnamed(SystemCalls& calls)
{
    calls.openat = [](int folder, const char* name, int flags, mode_t mode) {
        return (flags & O_TMPFILE) == O_TMPFILE ? (errno = EOPNOTSUPP, -1)
                                                : ::openat(folder, name, flags, mode);
    };
}

/// Closes files and reports that what was written could not be kept, as network drives may.
inline Refusal failsAtClose(int error)
{
    return [=](SystemCalls& calls) {
        calls.close = [=](int file) { return ::close(file), errno = error, -1; };
    };
}

/// Runs `work` at each attempt, before the first bytes are copied.
inline Refusal meanwhile(const std::function<void()>& work)
{
    return [=](SystemCalls& calls) {
        calls.clone = [=](int, int) { return work(), errno = EOPNOTSUPP, -1; };
    };
}

/// A source `from/Mix.wav` and an empty folder `to`.
class CopyTest : public testing::Test {
protected:
    [[nodiscard]] CopyOptions with(const std::vector<Refusal>& refusals) const
    {
        CopyOptions changed = options;
        for (const Refusal& refusal : refusals)
            refusal(changed.calls);
        return changed;
    }

    [[nodiscard]] std::set<std::string> names(const std::string& folder = "to") const
    {
        return files.names(folder);
    }

    TemporaryFolder files;
    std::string content = std::string(1 << 20, 'm') + "end";
    std::string source = files.write("from/Mix.wav", content);
    std::string target = files.makeFolder("to") + "/Mix.wav";
    CopyOptions options;
};

} // namespace stemvault

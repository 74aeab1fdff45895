#pragma once

#include "Foundation/FileCopy.h"
#include "Foundation/FileDescriptor.h"
#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace stemvault {

/// Lets a call fail with an error.
template <typename Call> void refuse(Call& call, int error)
{
    call = [error](auto...) {
        errno = error;
        return -1;
    };
}

/// Lets only those renames fail that carry one of the flags.
inline void refuseRename(SystemCalls& calls, unsigned flags, int error)
{
    calls.renameat2 = [=, real = calls.renameat2](
                          int from, const char* old, int to, const char* fresh, unsigned given) {
        errno = error;
        return (given & flags) != 0 ? -1 : real(from, old, to, fresh, given);
    };
}

inline void refuseUnnamed(SystemCalls& calls)
{
    calls.openat = [](int folder, const char* name, int flags, mode_t mode) {
        errno = EOPNOTSUPP;
        return (flags & O_TMPFILE) == O_TMPFILE ? -1 : ::openat(folder, name, flags, mode);
    };
}

/// Runs `work` before the first bytes of each attempt are copied.
inline void beforeContent(SystemCalls& calls, std::function<void()> work)
{
    calls.clone = [work = std::move(work)](int, int) {
        work();
        errno = EOPNOTSUPP;
        return -1;
    };
}

/// A source `from/Mix.wav` and an empty folder `to`.
class CopyTest : public testing::Test {
protected:
    [[nodiscard]] std::vector<std::string> namesIn(const std::string& folder) const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(files.path(folder)))
            names.push_back(entry.path().filename().string());
        std::ranges::sort(names);
        return names;
    }

    Result<void> copy() const { return copyItem(source, target, options); }

    TemporaryFolder files;
    std::string content = std::string(3 << 20, 'm') + "end";
    std::string source = files.write("from/Mix.wav", content);
    std::string target = files.makeFolder("to") + "/Mix.wav";
    CopyOptions options;
};

} // namespace stemvault

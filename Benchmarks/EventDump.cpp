// Prints the path of each event below some folders, one per line, until it receives SIGINT or
// SIGTERM; with --written, only the files that were created or written, among which the program
// looks for bounces. Used by scripts and for the comparison with other watchers.

#include "LinuxDesktop/FileEvents/InotifyStream.h"
#include "Platform/FileEvents.h"

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace {

bool isWrittenFile(std::uint32_t flags)
{
    using namespace stemvault::FileEventFlag;
    return (flags & ItemIsFile) != 0 && (flags & (ItemCreated | ItemModified)) != 0;
}

/// Only the watched folders themselves get a trailing slash, as other watchers print them.
void print(const stemvault::file_events::EventBatch& batch, bool isWrittenAlone)
{
    for (std::size_t index = 0; index < batch.paths.size(); ++index) {
        if (isWrittenAlone && !isWrittenFile(batch.flags[index]))
            continue;
        const std::string& path = batch.paths[index];
        std::fwrite(path.data(), 1, path.size(), stdout);
        if ((batch.flags[index] & stemvault::FileEventFlag::RootChanged) != 0)
            std::putchar('/');
        std::putchar('\n');
    }
    std::fflush(stdout);
}

sigset_t endingSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

} // namespace

int main(int count, char** arguments)
{
    stemvault::file_events::StreamOptions options;
    const bool isWrittenAlone = count > 1 && std::string_view(arguments[1]) == "--written";
    options.paths.assign(arguments + (isWrittenAlone ? 2 : 1), arguments + count);
    if (options.paths.empty()) {
        std::fputs("Usage: stemvault-eventdump [--written] FOLDER...\n", stderr);
        return 2;
    }
    const sigset_t signals = endingSignals();
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    const auto stream = stemvault::file_events::InotifyStream::create(
        options, [=](const auto& batch) { print(batch, isWrittenAlone); },
        [] { std::fputs("Watches established.\n", stderr); });
    if (!stream) {
        std::fputs("stemvault-eventdump: no thread or descriptor to spare\n", stderr);
        return 1;
    }
    int signal = 0;
    sigwait(&signals, &signal);
    return 0;
}

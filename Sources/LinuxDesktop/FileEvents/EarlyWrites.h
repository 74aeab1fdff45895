#pragma once

#include "LinuxDesktop/FileEvents/PolledFolders.h"
#include "LinuxDesktop/FileEvents/WatchState.h"

#include <cstddef>
#include <string>
#include <vector>

namespace stemvault {

/// Finds the files that were last written after the stream had begun and before their folder was
/// watched. Only the times of the files show that, and asking for all of them takes longer than
/// placing the watches, so it is done once afterwards, in short slices.
class EarlyWrites {
public:
    EarlyWrites(WatchState& shared, const PolledFolders& polledFolders);

    /// To be called when every folder that was there is watched.
    void begin();

    /// Looks at some folders. Whether there was anything to do.
    bool runSlice();

private:
    void lookAt(NodeId folder);
    void lookAt(NodeId folder, int descriptor, const char* name);

    WatchState& state;
    const PolledFolders& polled;
    std::vector<std::byte> buffer;
    std::string path;
    NodeId next = 0;
    NodeId end = 0;
    FileTime watchedSince; ///< By then all events are read.
};

} // namespace stemvault

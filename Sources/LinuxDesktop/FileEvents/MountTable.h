#pragma once

#include "Foundation/FileDescriptor.h"

#include <string>
#include <string_view>
#include <vector>

namespace stemvault::file_events {

/// The paths of all mount points in the text of /proc/self/mountinfo.
[[nodiscard]] std::vector<std::string> parseMountPoints(std::string_view mountInfo);

/// The mounts that this process sees. When they change, poll(2) reports POLLPRI on the descriptor.
class MountTable {
public:
    MountTable();

    [[nodiscard]] int get() const { return descriptor.get(); }
    [[nodiscard]] std::vector<std::string> mountPoints() const;

private:
    FileDescriptor descriptor;
};

} // namespace stemvault::file_events

#pragma once

#include "Foundation/FileDescriptor.h"

#include <string>
#include <string_view>
#include <vector>

namespace stemvault {

/// The paths of all mount points in the text of /proc/self/mountinfo.
[[nodiscard]] std::vector<std::string> parseMountPoints(std::string_view mountInfo);

/// The mounts this process sees. A change makes the descriptor ready for POLLPRI.
class MountTable {
public:
    MountTable();

    [[nodiscard]] int get() const { return descriptor.get(); }
    [[nodiscard]] std::vector<std::string> mountPoints() const;

private:
    FileDescriptor descriptor;
};

} // namespace stemvault

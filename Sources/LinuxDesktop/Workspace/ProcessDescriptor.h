#pragma once

#include "Foundation/FileDescriptor.h"

#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

namespace stemvault::workspace {

/// A descriptor that becomes readable, and stays so, once the process has ended. Not open if there
/// is no such process. (The C library's own function cannot be linked from C++ in version 2.36.)
[[nodiscard]] inline FileDescriptor openProcess(pid_t process)
{
    return FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
}

} // namespace stemvault::workspace

#pragma once

#include <string>
#include <string_view>
#include <sys/types.h>

namespace stemvault {

/// A name in the form in which lsof prints it under C.UTF-8: backslashes and what is not text
/// escaped, so that a name never ends its line.
[[nodiscard]] std::string nameAsPrinted(std::string_view name);

/// The files mapped by a process, from the text of its `maps`: each name once, in that order.
[[nodiscard]] std::string linesOfMappedFiles(std::string_view maps, std::string_view executable);

/// What `lsof -p PID -Fn` prints, put together from the process's links, which answer even while
/// a mount is dead. Empty when there is no such process.
[[nodiscard]] std::string lsofFallback(pid_t process, const std::string& procRoot = "/proc");

} // namespace stemvault

#pragma once

#include <string>
#include <string_view>
#include <sys/types.h>

namespace stemvault::open_files {

/// A name as lsof prints it under C.UTF-8: backslashes and bytes that are not printable text are
/// escaped, so that a name never contains a line feed.
[[nodiscard]] std::string nameAsPrinted(std::string_view name);

/// Lines for the files that a process maps, except `executable`, from the text of its `maps`: each
/// name once, in that order.
[[nodiscard]] std::string linesOfMappedFiles(std::string_view maps, std::string_view executable);

/// The output of `lsof -p PID -Fn`, built from the process's files in /proc, which can be read even
/// while a mount is dead. Empty if there is no such process.
[[nodiscard]] std::string lsofFallback(pid_t process, const std::string& procRoot = "/proc");

} // namespace stemvault::open_files

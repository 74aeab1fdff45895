#pragma once

#include "Foundation/FileDescriptor.h"

#include <fcntl.h>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

namespace stemvault {

// Functions that access folders by descriptor, so that neither the length of a path nor a rename of
// an ancestor matters. A function that fails sets errno.

/// A path of any length, shortened to what the kernel accepts in one call: an open folder and the
/// rest of the path below it. The path must outlive this object.
class KernelPath {
public:
    /// Opens folders only for a path of PATH_MAX bytes or more.
    explicit KernelPath(const std::string& path);

    /// False, with errno set, when a folder along the path could not be opened. The name is then
    /// empty, which the kernel refuses.
    [[nodiscard]] bool isReachable() const { return reachable; }

    [[nodiscard]] int folder() const { return base ? base.get() : AT_FDCWD; }
    [[nodiscard]] const char* name() const;

private:
    [[nodiscard]] bool enterAsFarAsPossible();

    std::string_view rest; ///< A tail of the path, and so null-terminated.
    FileDescriptor base;
    bool reachable = true;
};

/// As open(2), for paths of any length. Always close-on-exec.
[[nodiscard]] FileDescriptor openPath(const std::string& path, int flags);

/// As open(2), but fails when any part of the path is a link, and on a kernel without openat2(2).
[[nodiscard]] FileDescriptor openWithoutLinks(const std::string& path, int flags);

/// Opens the content of an item that was opened with O_PATH, even if its path now leads elsewhere.
[[nodiscard]] FileDescriptor openContent(int item, int flags);

/// Opens a folder to put items into, even if it may be written but not listed.
[[nodiscard]] FileDescriptor openFolder(const std::string& path);

/// The status of the item at a path of any length; a final link is not followed.
[[nodiscard]] std::optional<struct stat> linkStatus(const std::string& path);
[[nodiscard]] std::optional<struct stat> linkStatus(int folder, const std::string& name);

[[nodiscard]] std::optional<struct stat> statusOf(int descriptor);

/// The target of a link, as readlinkat(2) gives it; absent for anything else.
[[nodiscard]] std::optional<std::string> linkTarget(int folder, const std::string& link);

[[nodiscard]] bool isSameItem(const struct stat& one, const struct stat& other);

/// The names in a folder in no particular order, without "." and "..".
[[nodiscard]] std::optional<std::vector<std::string>> namesIn(int folder);

/// Whether `folder` is `ancestor` or lies below it.
[[nodiscard]] bool isWithin(int folder, const struct stat& ancestor);

/// Removes a file, a link, or a folder with everything in it. Never enters another file system.
bool removeItem(int folder, const std::string& name);

} // namespace stemvault

#include "Courier/Selection.h"

#include "Courier/CopiedFiles.h"
#include "Courier/FocusedWindow.h"
#include "Courier/WaylandClipboard.h"
#include "Courier/X11Clipboard.h"
#include "Foundation/Environment.h"
#include "Foundation/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace stemvault {

namespace {

using namespace std::chrono_literals;
using Files = std::vector<std::string>;

constexpr auto timeToLetGo = 3s; ///< For the user to release the hotkey.
constexpr auto timeToCopy = 1500ms;
constexpr auto timeToRead = 2s;
constexpr auto timeToSave = 1s;

const Failure nothingSelected { "Nothing is selected. Select audio files or folders in the file "
                                "manager, then press the hotkey." };
const Failure nothingCopied { "No files have been copied. Copy audio files or folders in the file "
                              "manager (Ctrl+C), then press the hotkey." };
const Failure noReader { "Here, copied files can only be read with the tool wl-paste. Install the "
                         "package wl-clipboard, then press the hotkey again." };
const Failure keysHeld { "The keys of the hotkey were not let go. Press it briefly." };

Deadline in(std::chrono::milliseconds time)
{
    return std::chrono::steady_clock::now() + time;
}

Files filesOn(const X11Clipboard& clipboard)
{
    if (!clipboard.hasOwner())
        return {};
    const Deadline deadline = in(timeToRead);
    for (const std::string_view format : copiedFilesFormats)
        if (const auto content = clipboard.read(format, deadline))
            if (Files files = copiedFiles(format, content->bytes); !files.empty())
                return files;
    return {};
}

Files filesOnWayland(const std::vector<std::string>& offered)
{
    for (const std::string_view format : copiedFilesFormats) {
        if (std::ranges::find(offered, format) == offered.end())
            continue;
        const std::string content = WaylandClipboard::read(format, in(timeToRead));
        if (Files files = copiedFiles(format, content); !files.empty())
            return files;
    }
    return {};
}

// GNOME synchronises the clipboard of X programs with its own, and lets a program without a window
// read only the former. Other desktops keep them separate until an X window has the focus.
bool hasCommonClipboard()
{
    return environment("XDG_CURRENT_DESKTOP").find("GNOME") != std::string::npos;
}

Result<Files> copiedBefore(const X11Display* display)
{
    const bool isWayland = !environment("WAYLAND_DISPLAY").empty();
    if (isWayland && (display == nullptr || !hasCommonClipboard())) {
        const auto offered = WaylandClipboard::formats(in(timeToRead));
        if (!offered)
            return noReader;
        Files files = filesOnWayland(*offered);
        return files.empty() ? Result<Files>(nothingCopied) : Result<Files>(std::move(files));
    }
    Files files = display != nullptr ? filesOn(X11Clipboard(*display)) : Files();
    return files.empty() ? Result<Files>(nothingCopied) : Result<Files>(std::move(files));
}

/// The files that an X window was made to copy, and the previous content of the clipboard.
struct Copied {
    Result<Files> files = nothingSelected;
    X11Clipboard::Content before;
    bool isChanged = false;
};

Copied copyFrom(const FocusedWindow& window, const X11Clipboard& clipboard)
{
    Copied copied;
    if (!window.waitForKeyboard(in(timeToLetGo))) {
        copied.files = keysHeld;
        return copied;
    }
    copied.before = clipboard.content(in(timeToSave));
    clipboard.watch();
    if (!window.pressCopy() || !clipboard.waitForChange(in(timeToCopy)))
        return copied;
    copied.isChanged = true;
    if (Files files = filesOn(clipboard); !files.empty())
        copied.files = std::move(files);
    return copied;
}

// The answer goes through a pipe: "+" and the URIs, each followed by a line feed, or "-" and the
// reason.
void write(int pipe, const Result<Files>& files)
{
    std::string text = files ? "+" : "-" + files.error();
    if (files)
        for (const std::string& uri : files.value())
            text += uri + '\n';
    for (std::string_view rest = text; !rest.empty();) {
        const ssize_t size = ::write(pipe, rest.data(), rest.size());
        if (size <= 0)
            return;
        rest.remove_prefix(static_cast<std::size_t>(size));
    }
}

Result<Files> read(int pipe)
{
    std::string text;
    std::array<char, 65536> portion {};
    for (ssize_t size = 0; (size = ::read(pipe, portion.data(), portion.size())) > 0;)
        text.append(portion.data(), static_cast<std::size_t>(size));
    if (!text.starts_with('+'))
        return text.empty() ? nothingSelected : Failure { text.substr(1) };
    Files files;
    for (std::size_t start = 1, end = 0; (end = text.find('\n', start)) != std::string::npos;
         start = end + 1)
        files.push_back(text.substr(start, end - start));
    return files;
}

/// Makes sure that a program waiting for the Courier's output does not wait for this process too.
void detach()
{
    ::setsid();
    const int nowhere = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int standard : { STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO })
        ::dup2(nowhere, standard);
    static_cast<void>(::chdir("/"));
}

/// Writes the answer, and then serves the old content of the clipboard until something else is
/// copied.
void find(FileDescriptor answer)
{
    const auto display = X11Display::connect();
    const auto window = display ? FocusedWindow::of(*display) : std::nullopt;
    if (!window || window->isTerminal())
        return write(answer.get(), copiedBefore(display.get()));
    const X11Clipboard clipboard(*display);
    const Copied copied = copyFrom(*window, clipboard);
    if (copied.isChanged)
        clipboard.put(copied.before);
    write(answer.get(), copied.files);
    answer = FileDescriptor();
    if (!copied.isChanged || copied.before.empty())
        return;
    detach();
    clipboard.serve(copied.before);
}

} // namespace

Result<std::vector<std::string>> selectedFiles()
{
    std::array<int, 2> ends {};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return nothingSelected;
    const FileDescriptor reading(ends[0]);
    FileDescriptor writing(ends[1]);
    if (::fork() == 0) {
        find(std::move(writing));
        ::_exit(0);
    }
    writing = FileDescriptor();
    return read(reading.get());
}

} // namespace stemvault

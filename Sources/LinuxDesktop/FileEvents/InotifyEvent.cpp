#include "LinuxDesktop/FileEvents/InotifyEvent.h"

#include <cstring>
#include <sys/inotify.h>
#include <utility>

namespace stemvault::file_events {

std::optional<InotifyEvent> takeInotifyEvent(std::span<const std::byte>& buffer)
{
    const std::span<const std::byte> from = std::exchange(buffer, {});
    inotify_event header {};
    if (from.size() < sizeof header)
        return std::nullopt;
    std::memcpy(&header, from.data(), sizeof header);
    const std::span<const std::byte> rest = from.subspan(sizeof header);
    if (rest.size() < header.len)
        return std::nullopt;
    buffer = rest.subspan(header.len);
    // The name is padded with zeros to that length.
    const char* const name = reinterpret_cast<const char*>(rest.data());
    return InotifyEvent { header.wd, header.mask, header.cookie,
        std::string_view(name, strnlen(name, header.len)) };
}

} // namespace stemvault::file_events

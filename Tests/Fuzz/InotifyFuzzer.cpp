#include "Fuzz/Fuzzer.h"
#include "LinuxDesktop/FileEvents/InotifyEvent.h"

#include <sys/inotify.h>

// Parses the bytes read from inotify into events.
namespace stemvault {

void feed(std::string_view input)
{
    std::span<const std::byte> rest = std::as_bytes(std::span(input));
    for (auto before = rest; const auto event = file_events::takeInotifyEvent(rest);
         before = rest) {
        const std::string_view name = event->name;
        require(rest.size() + sizeof(inotify_event) + name.size() <= before.size(),
            "each event takes its own bytes");
        require(name.empty()
                || (name.data() > input.data()
                    && name.data() + name.size() <= input.data() + input.size()),
            "a name lies in what was read");
        require(name.find('\0') == std::string_view::npos, "a name ends where its padding begins");
    }
    require(rest.empty(), "nothing is left over");
}

} // namespace stemvault

#include "Fuzz/Fuzzer.h"
#include "LinuxDesktop/FileEvents/MountTable.h"

// Parses the mount table; anyone who may mount can choose the names in it.
namespace stemvault {

namespace {

/// The name as the kernel writes it.
std::string escaped(std::string_view name)
{
    std::string text;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::string_view(" \t\n\\#").find(c) == std::string_view::npos)
            text += c;
        else
            text += { '\\', static_cast<char>('0' + byte / 64),
                static_cast<char>('0' + byte / 8 % 8), static_cast<char>('0' + byte % 8) };
    }
    return text;
}

} // namespace

void feed(std::string_view input)
{
    const std::string text(input);
    const auto points =
        file_events::parseMountPoints(text + "\n1 2 0:3 / " + escaped("/" + text) + " rw - x y z");
    require(!points.empty() && points.back() == "/" + text,
        "a mount of any name is found, whatever is above it");
}

} // namespace stemvault

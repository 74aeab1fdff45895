#include "Foundation/Environment.h"

#include "Foundation/HomeDirectory.h"

#include <cstdlib>

namespace stemvault {

std::string environment(const char* name)
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the program changes only XDG_ACTIVATION_TOKEN.
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

// A relative path in XDG_CONFIG_HOME is invalid and is ignored, as all desktops do.
std::string configurationFolder()
{
    const std::string folder = environment("XDG_CONFIG_HOME");
    return folder.starts_with('/') ? folder : homeDirectory() + "/.config";
}

} // namespace stemvault

#include "Foundation/Environment.h"

#include "Foundation/HomeDirectory.h"

#include <cstdlib>

namespace stemvault {

std::string environment(const char* name)
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing in the program changes the environment.
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

// A relative path is invalid there and to be passed over.
std::string configurationFolder()
{
    const std::string folder = environment("XDG_CONFIG_HOME");
    return folder.starts_with('/') ? folder : homeDirectory() + "/.config";
}

} // namespace stemvault

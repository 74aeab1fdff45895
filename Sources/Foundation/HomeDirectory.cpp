#include "Foundation/HomeDirectory.h"

#include "Foundation/PathText.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace stemvault {

std::string homeDirectory()
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing in the program changes the variable.
    if (const char* const home = std::getenv("HOME"); home && *home == '/')
        return std::string(withoutTrailingSlash(home));
    passwd entry {};
    passwd* found = nullptr;
    std::vector<char> buffer(16384);
    ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
    return found ? std::string(withoutTrailingSlash(found->pw_dir)) : std::string();
}

} // namespace stemvault

#include "Foundation/HomeDirectory.h"

#include "Foundation/PathText.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace stemvault {

std::string homeDirectory()
{
    if (const char* home = std::getenv("HOME"); home && *home)
        return std::string(withoutTrailingSlash(home));
    const passwd* user = getpwuid(geteuid());
    return user && user->pw_dir ? std::string(withoutTrailingSlash(user->pw_dir)) : std::string();
}

} // namespace stemvault

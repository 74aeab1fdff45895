#include "Platform/Platform.h"

#include <cassert>

namespace stemvault {

namespace {
const Platform* installed = nullptr;
}

const Platform& Platform::current()
{
    assert(installed);
    return *installed;
}

void Platform::install(const Platform* platform)
{
    installed = platform;
}

} // namespace stemvault

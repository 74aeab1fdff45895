#include "Foundation/Shared.h"

#include <vector>

namespace stemvault {

namespace {

std::vector<std::function<void()>>& destroyers()
{
    // Never destroyed, so that no instance is destroyed while the process exits.
    static auto& list = *new std::vector<std::function<void()>>;
    return list;
}

} // namespace

void SharedInstances::keep(std::function<void()> destroy)
{
    destroyers().push_back(std::move(destroy));
}

void SharedInstances::destroyAll()
{
    while (!destroyers().empty()) {
        const auto destroy = std::move(destroyers().back());
        destroyers().pop_back();
        destroy();
    }
}

} // namespace stemvault

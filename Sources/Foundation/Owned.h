#pragma once

#include <cstdlib>
#include <memory>

namespace stemvault {

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

/// Memory that a C library allocated with malloc, for example a reply of the X server.
template <typename T> using Owned = std::unique_ptr<T, FreeMemory>;

template <typename T> Owned<T> takeOwnership(T* memory)
{
    return Owned<T>(memory);
}

} // namespace stemvault

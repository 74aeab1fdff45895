#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace stemvault {

/// Defined by each fuzzer: passes one input of arbitrary bytes to the code under test.
void feed(std::string_view input);

/// Aborts the program if the condition does not hold, so that libFuzzer keeps the input.
inline void require(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "This did not hold: %s.\n", what);
    std::abort();
}

} // namespace stemvault

// NOLINTNEXTLINE(misc-definitions-in-headers): each fuzzer has only one source file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    stemvault::feed({ reinterpret_cast<const char*>(bytes), size });
    return 0;
}

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace stemvault {

/// Defined by each fuzzer: hands one input, any bytes at all, to what the fuzzer is about.
void feed(std::string_view input);

/// Ends the program, so that libFuzzer keeps the input, when that does not hold.
inline void mustHold(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "This did not hold: %s.\n", what);
    std::abort();
}

} // namespace stemvault

// NOLINTNEXTLINE(misc-definitions-in-headers): a fuzzer is one file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    stemvault::feed({ reinterpret_cast<const char*>(bytes), size });
    return 0;
}

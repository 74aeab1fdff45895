// stemvault-function-bench: the small functions that run for every event or every open file.

#include "Foundation/PathText.h"
#include "Foundation/UnicodeText.h"

#include <benchmark/benchmark.h>

#include <string>

namespace stemvault {
namespace {

const std::string path = "/home/mia/Sessions/Big Song/Bounced Files/Big Song Mix 12.WAV";

void pathExtensionLowered(benchmark::State& state)
{
    while (state.KeepRunning())
        benchmark::DoNotOptimize(lowercased(pathExtension(path)));
}
BENCHMARK(pathExtensionLowered);

void parentFolderName(benchmark::State& state)
{
    while (state.KeepRunning())
        benchmark::DoNotOptimize(lastPathComponent(deletingLastPathComponent(path)));
}
BENCHMARK(parentFolderName);

void lowercasedBeyondASCII(benchmark::State& state)
{
    const std::string name = "ÉTUDE N° 4 – MÄRZ ÜBERSICHT.WAV";
    while (state.KeepRunning())
        benchmark::DoNotOptimize(lowercased(name));
}
BENCHMARK(lowercasedBeyondASCII);

} // namespace
} // namespace stemvault

BENCHMARK_MAIN();

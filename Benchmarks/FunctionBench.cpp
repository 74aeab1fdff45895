// stemvault-function-bench: measures small functions that run for every event or every open file.

#include "Foundation/PathText.h"
#include "Foundation/UnicodeText.h"
#include "StemvaultConnect/SessionFolder.h"

#include <benchmark/benchmark.h>

#include <optional>
#include <string>
#include <string_view>

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

/// 1 MB of lsof's output for a DAW with thousands of plug-ins; the session file comes last, so
/// every rule checks every line.
std::string lsofText()
{
    std::string text = "p4711\nfcwd\nn/home/mia\n";
    for (int i = 0; text.size() < 1'000'000; ++i)
        text += "ftxt\nn/usr/lib/vst3/Vendor " + std::to_string(i % 97) + "/Équaliseur "
            + std::to_string(i) + ".vst3/Contents/x86_64-linux/plugin.so\n";
    return text + "n/home/mia/Sessions/Big Song/Big Song.rpp\n";
}

void sessionFolderFromOneMegabyteOfOpenFiles(benchmark::State& state)
{
    const std::string text = lsofText();
    constexpr std::string_view extensions[] = { "ptx", "logicx", "als", "song", "cpr", "rpp" };
    const ModificationDate unknown = [](const std::string&) { return std::nullopt; };
    while (state.KeepRunning())
        benchmark::DoNotOptimize(sessionFolder(openPaths(text), extensions, unknown));
}
BENCHMARK(sessionFolderFromOneMegabyteOfOpenFiles);

} // namespace
} // namespace stemvault

BENCHMARK_MAIN();

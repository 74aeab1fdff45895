#include "Foundation/PathText.h"
#include "Fuzz/Fuzzer.h"
#include "LinuxDesktop/OpenFiles/LsofFallback.h"
#include "StemvaultConnect/SessionFolder.h"

#include <algorithm>

// Finds the session folder in the output of lsof, or in its substitute while a mount is dead.
namespace stemvault {

namespace {

constexpr std::string_view extensions[] = { "ptx", "logicx", "als", "song", "cpr", "rpp" };

auto someDate(const std::string& path)
{
    return std::chrono::sys_time<std::chrono::nanoseconds>(std::chrono::hours(path.back()));
}

void feedOutput(std::string_view text)
{
    const auto paths = openPaths(text);
    for (const std::string_view path : paths) {
        require(path.starts_with('/') && path.find('\n') == std::string_view::npos,
            "an open path is absolute and one line");
        require(path.data() > text.data() && path.data() + path.size() <= text.data() + text.size(),
            "an open path lies in the text");
    }
    const auto folder = sessionFolder(paths, extensions, someDate);
    require(!folder
            || std::ranges::any_of(paths,
                [&](std::string_view path) {
                    return path.starts_with(appendingPathComponent(folder->path(), ""));
                }),
        "the session's folder lies above an open file");
}

} // namespace

void feed(std::string_view input)
{
    feedOutput(input);
    const std::string mapped = open_files::linesOfMappedFiles(input, "/exe");
    feedOutput(mapped);
    require(openPaths(mapped).size() == static_cast<std::size_t>(std::ranges::count(mapped, '\n')),
        "each mapped file is one line with its path");
    require(openPaths("n/" + open_files::nameAsPrinted(input) + "\n").size() == 1,
        "every name can be printed as one line");
}

} // namespace stemvault

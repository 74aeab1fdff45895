#include "Courier/CopiedFiles.h"

#include "Foundation/FileURI.h"

namespace stemvault {

namespace {

std::vector<std::string_view> linesOf(std::string_view text)
{
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const auto end = text.find_first_of(std::string_view("\n\0", 2));
        std::string_view line = text.substr(0, end);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        lines.push_back(line);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return lines;
}

} // namespace

std::vector<std::string> copiedFiles(std::string_view format, std::string_view content)
{
    // Any other text may contain a file's URI without being a list of copied files.
    if (format == "UTF8_STRING" && !content.starts_with("x-special/nautilus-clipboard\n"))
        return {};
    std::vector<std::string> uris;
    for (const std::string_view line : linesOf(content))
        if (const auto path = pathOfFileURI(line))
            uris.push_back(fileURI(*path));
    return uris;
}

} // namespace stemvault

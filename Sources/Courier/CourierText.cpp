#include "Courier/CourierText.h"

#include <algorithm>
#include <filesystem>

namespace stemvault {

namespace {

using std::filesystem::path;

bool leadsUp(const path& name)
{
    return std::ranges::find(name, path("..")) != name.end();
}

/// The path with the links in its folder resolved, or all of its links if it ends in "..";
/// unchanged if there is no such folder.
path resolved(const path& name)
{
    std::error_code unknown;
    if (name.filename() == "..") {
        const path folder = std::filesystem::canonical(name, unknown);
        return unknown ? name : folder;
    }
    const path folder = std::filesystem::canonical(name.parent_path(), unknown);
    return unknown ? name : folder / name.filename();
}

} // namespace

std::string absolutePath(std::string_view argument)
{
    std::error_code unknown; // Without a working directory, the path is left unchanged.
    const path whole = std::filesystem::absolute(argument, unknown);
    if (unknown)
        return std::string(argument);
    return leadsUp(whole) ? resolved(whole).native() : whole.lexically_normal().native();
}

std::string escapedMarkup(std::string_view text)
{
    std::string escaped;
    for (const char character : text) {
        switch (character) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        default:
            escaped += character;
        }
    }
    return escaped;
}

} // namespace stemvault

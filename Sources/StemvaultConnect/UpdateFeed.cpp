#include "StemvaultConnect/UpdateFeed.h"

#include "Foundation/ASCIIText.h"
#include "Foundation/JSONNesting.h"
#include "Foundation/NumberText.h"
#include "Foundation/UnicodeText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace stemvault {

namespace {

using nlohmann::json;

constexpr auto none = std::string_view::npos;

/// `wanted` must be in lower case.
std::size_t findIgnoringCase(std::string_view text, std::string_view wanted, std::size_t from)
{
    const auto found = std::search(text.begin() + static_cast<std::ptrdiff_t>(from), text.end(),
        wanted.begin(), wanted.end(), [](char a, char b) { return asciiLowercased(a) == b; });
    return found == text.end() ? none : static_cast<std::size_t>(found - text.begin());
}

std::string replaced(std::string_view text, std::string_view wanted, std::string_view by)
{
    std::string result;
    result.reserve(text.size());
    std::size_t from = 0;
    for (auto at = text.find(wanted); at != none; at = text.find(wanted, from)) {
        result.append(text, from, at - from).append(by);
        from = at + wanted.size();
    }
    return result.append(text, from);
}

// The ampersand is replaced last, so that text that was escaped twice keeps one level of escaping.
std::string unescaped(std::string_view html)
{
    std::string text(html);
    for (const auto& [entity, character] : { std::pair("&quot;", "\""), std::pair("&#39;", "'"),
             std::pair("&lt;", "<"), std::pair("&gt;", ">"), std::pair("&amp;", "&") })
        text = replaced(text, entity, character);
    return text;
}

/// False when the member is missing or not a string.
bool decodeText(const json& object, const char* name, std::string& text)
{
    const auto member = object.find(name);
    if (member == object.end() || !member->is_string())
        return false;
    text = member->get<std::string>();
    return true;
}

std::optional<UpdateInfo> decodedInfo(const json& object)
{
    UpdateInfo info;
    if (!object.is_object() || !decodeText(object, "latest_version", info.latestVersion)
        || !decodeText(object, "download_url", info.downloadURL))
        return std::nullopt;
    const auto notes = object.find("notes");
    if (notes == object.end() || notes->is_null())
        return info;
    if (!notes->is_string())
        return std::nullopt;
    info.notes = notes->get<std::string>();
    return info;
}

/// The value of a decimal number of 64 bits with an optional sign; 0 for any other text.
std::int64_t number(std::string_view piece)
{
    if (piece.starts_with('+')) {
        piece.remove_prefix(1);
        if (piece.starts_with('-'))
            return 0;
    }
    return parseNumber<std::int64_t>(piece).value_or(0);
}

std::vector<std::int64_t> numbers(std::string_view version)
{
    std::vector<std::int64_t> all;
    while (!version.empty()) {
        const auto end = std::min(version.find('.'), version.size());
        if (end > 0)
            all.push_back(number(version.substr(0, end)));
        version.remove_prefix(std::min(end + 1, version.size()));
    }
    return all;
}

} // namespace

std::optional<std::string> extractJSON(std::string_view page)
{
    const auto tag = findIgnoringCase(page, "<pre", 0);
    if (tag == none)
        return std::nullopt;
    const auto tagEnd = page.find('>', tag + std::string_view("<pre").size());
    if (tagEnd == none)
        return std::nullopt;
    const auto blockEnd = findIgnoringCase(page, "</pre>", tagEnd + 1);
    if (blockEnd == none)
        return std::nullopt;
    return trimmed(unescaped(page.substr(tagEnd + 1, blockEnd - tagEnd - 1)));
}

std::optional<std::map<std::string, UpdateInfo>> decodedFeed(const std::string& text)
{
    if (isNestedTooDeeply(text))
        return std::nullopt;
    const json feed = json::parse(text, nullptr, false);
    if (!feed.is_object())
        return std::nullopt;
    std::map<std::string, UpdateInfo> infos;
    for (const auto& [appKey, object] : feed.items()) {
        auto info = decodedInfo(object);
        if (!info)
            return std::nullopt;
        infos.emplace(appKey, std::move(*info));
    }
    return infos;
}

bool isNewer(std::string_view latest, std::string_view current)
{
    auto ours = numbers(current);
    auto theirs = numbers(latest);
    const auto length = std::max(ours.size(), theirs.size());
    ours.resize(length);
    theirs.resize(length);
    return theirs > ours;
}

} // namespace stemvault

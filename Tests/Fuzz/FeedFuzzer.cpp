#include "Foundation/UnicodeText.h"
#include "Fuzz/Fuzzer.h"
#include "StemvaultConnect/UpdateFeed.h"

#include <nlohmann/json.hpp>

// Parses the page of the update feed into its entries.
namespace stemvault {

namespace {

std::string escaped(std::string_view text)
{
    std::string html;
    for (const char c : text)
        html += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '"' ? "&quot;" : std::string(1, c);
    return html;
}

void feedJSON(const std::string& text)
{
    const auto infos = decodedFeed(text);
    if (!infos)
        return;
    auto feed = nlohmann::json::object();
    for (const auto& [appKey, info] : *infos) {
        feed[appKey] = { { "latest_version", info.latestVersion },
            { "download_url", info.downloadURL } };
        if (info.notes)
            feed[appKey]["notes"] = *info.notes;
    }
    require(decodedFeed(feed.dump()) == infos, "entries written again read the same");
}

} // namespace

void feed(std::string_view input)
{
    feedJSON(std::string(input));
    require(extractJSON("<PRE>" + escaped(input) + "</Pre>") == trimmed(input),
        "what a page quotes comes through");
    if (const auto json = extractJSON(input)) {
        require(json->size() < input.size(), "taking out the block never grows it");
        feedJSON(*json);
    }
}

} // namespace stemvault

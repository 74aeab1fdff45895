#include "Foundation/URLComponents.h"

#include "Foundation/PercentEncoding.h"

#include <algorithm>
#include <uriparser/Uri.h>

namespace stemvault {

namespace {

bool isURL(const std::string& text)
{
    UriUriA uri {};
    const char* const end = text.data() + text.size();
    if (uriParseSingleUriExA(&uri, text.data(), end, nullptr) != URI_SUCCESS)
        return false;
    uriFreeUriMembersA(&uri);
    return true;
}

} // namespace

std::optional<URLComponents> URLComponents::fromString(const std::string& text)
{
    if (!isURL(text))
        return std::nullopt;
    const auto fragmentStart = std::min(text.find('#'), text.size());
    const auto queryStart = std::min(text.find('?'), fragmentStart);
    URLComponents components;
    components.location = text.substr(0, queryStart);
    components.query = text.substr(queryStart, fragmentStart - queryStart);
    components.fragment = text.substr(fragmentStart);
    return components;
}

void URLComponents::setQueryItems(const std::vector<std::pair<std::string, std::string>>& items)
{
    query.clear();
    for (const auto& [name, value] : items)
        query += (query.empty() ? "?" : "&") + percentEncoded(name) + "=" + percentEncoded(value);
}

} // namespace stemvault

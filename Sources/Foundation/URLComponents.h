#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace stemvault {

/// A URL, absolute or relative, split before and after its query.
class URLComponents {
public:
    /// Absent if the text is not a URL as defined by RFC 3986.
    [[nodiscard]] static std::optional<URLComponents> fromString(const std::string& text);

    /// Replaces the whole query. Names and values may hold any bytes; they are percent-encoded.
    void setQueryItems(const std::vector<std::pair<std::string, std::string>>& items);

    [[nodiscard]] std::string absoluteString() const { return location + query + fragment; }

private:
    URLComponents() = default;

    std::string location; ///< Scheme, host, port and path.
    std::string query; ///< With its "?".
    std::string fragment; ///< With its "#".
};

} // namespace stemvault

#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace stemvault {

/// A URL, absolute or relative, taken apart where its query stands.
class URLComponents {
public:
    /// Absent for a text that is not a URL by the letter of RFC 3986.
    [[nodiscard]] static std::optional<URLComponents> fromString(const std::string& text);

    /// Replaces the whole query. Names and values are any bytes; they are percent-encoded.
    void setQueryItems(const std::vector<std::pair<std::string, std::string>>& items);

    [[nodiscard]] std::string absoluteString() const { return location + query + fragment; }

private:
    URLComponents() = default;

    std::string location; ///< Scheme, host, port and path.
    std::string query; ///< With its "?".
    std::string fragment; ///< With its "#".
};

} // namespace stemvault

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace stemvault {

/// A universally unique identifier, 128 bits.
class UUID {
public:
    /// A fresh random (version 4) identifier.
    UUID();

    /// Reads the canonical form: 8-4-4-4-12 hexadecimal digits in either case, nothing else.
    [[nodiscard]] static std::optional<UUID> fromString(std::string_view text);

    /// The canonical form in upper case, 36 characters.
    [[nodiscard]] std::string uuidString() const;

    [[nodiscard]] bool operator==(const UUID&) const = default;

private:
    explicit UUID(const std::array<std::uint8_t, 16>& value) : bytes(value) { }

    std::array<std::uint8_t, 16> bytes;
};

} // namespace stemvault

#pragma once

namespace stemvault {

/// Lower case for the letters A to Z only, independent of the locale.
[[nodiscard]] constexpr char asciiLowercased(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

} // namespace stemvault

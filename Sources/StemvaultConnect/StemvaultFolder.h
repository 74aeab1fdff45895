#pragma once

#include "Foundation/UUID.h"

#include <string>

namespace stemvault {

/// One destination that a bounce can be copied into.
struct StemvaultFolder {
    UUID id; ///< Its identity; given once and kept.
    std::string name; ///< The label that the user sees.
    std::string path; ///< Absolute, without a trailing slash. Nothing promises that it exists.

    [[nodiscard]] bool operator==(const StemvaultFolder&) const = default;
};

} // namespace stemvault

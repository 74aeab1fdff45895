#pragma once

#include "Foundation/UUID.h"

#include <string>

namespace stemvault {

/// One destination that a bounce can be copied into.
struct StemvaultFolder {
    UUID id; ///< Its identity; assigned once and never changed.
    std::string name; ///< The label that the user sees.
    std::string path; ///< Absolute, without a trailing slash. The folder may not exist.

    [[nodiscard]] bool operator==(const StemvaultFolder&) const = default;
};

} // namespace stemvault

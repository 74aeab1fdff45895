#pragma once

#include "Platform/OpenFiles.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace stemvault {

struct FakeOpenFiles : OpenFiles {
    [[nodiscard]] std::optional<std::string> listing(std::int32_t process) override
    {
        calls.push_back(process);
        if (!isLsofThere)
            return std::nullopt;
        const auto found = listings.find(process);
        return found == listings.end() ? std::string() : found->second;
    }

    // What a test may do.
    std::map<std::int32_t, std::string> listings; ///< By process; others have no file open.
    bool isLsofThere = true;
    std::vector<std::int32_t> calls; ///< The processes asked about.
};

} // namespace stemvault

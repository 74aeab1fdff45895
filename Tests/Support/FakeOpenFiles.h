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
        const auto found = listings.find(process);
        return found == listings.end() ? "" : found->second;
    }

    // What a test may do.
    /// By process; processes without an entry have no open files.
    std::map<std::int32_t, std::optional<std::string>> listings;
    std::vector<std::int32_t> calls; ///< The processes that were queried.
};

} // namespace stemvault

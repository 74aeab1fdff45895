#pragma once

#include <gtest/gtest.h>

#include <string>

namespace stemvault {

// Each table in this folder runs on the fake and on the real adapter of one interface, so that the
// fake, which the program's tests rely on, keeps the same contract. Each of the two has a stage
// class. Both classes have the same functions, for what the user, the desktop or the disk does.

/// Names a typed test after its stage.
struct StageNames {
    template <typename Stage> static std::string GetName(int /*index*/) { return Stage::name; }
};

} // namespace stemvault

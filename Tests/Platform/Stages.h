#pragma once

#include <gtest/gtest.h>

#include <string>

namespace stemvault {

// Each table of this folder runs on the fake and on the real adapter of one interface, so that the
// fake that the program's tests rely on keeps the same contract. Both are put on a stage: a class
// of the same shape for either, with what the user, the desktop or the disk does.

/// Names a typed test after its stage.
struct StageNames {
    template <typename Stage> static std::string GetName(int /*index*/) { return Stage::name; }
};

} // namespace stemvault

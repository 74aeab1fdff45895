#pragma once

#include "Platform/Windows.h"

#include <deque>
#include <functional>
#include <memory>
#include <string>

namespace stemvault {

struct FakeWindows : Windows {
    explicit FakeWindows(Dispatch& queues) : dispatch(queues) { }
    [[nodiscard]] std::unique_ptr<Window> window(std::function<View()> body) override;

    // What a test may look at.
    std::deque<std::string> windows; ///< The history of each: "made, titled Mixes, shown".

private:
    Dispatch& dispatch;
};

} // namespace stemvault

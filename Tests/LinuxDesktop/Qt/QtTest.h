#pragma once

#include <QTest>
#include <gmock/gmock.h>

#include <chrono>

namespace stemvault {

using namespace std::chrono_literals;
using testing::ElementsAre;

/// Runs the event loop until the condition holds, for ten seconds at most; whether it holds.
template <typename Condition> [[nodiscard]] bool happens(Condition condition)
{
    return QTest::qWaitFor(condition, 10'000);
}

} // namespace stemvault

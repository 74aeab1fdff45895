#pragma once

#include <QList>
#include <QTest>
#include <gmock/gmock.h>

#include <chrono>

namespace stemvault {

using namespace std::chrono_literals;
using testing::ElementsAre;

/// Runs the event loop until the condition holds, at most ten seconds. Returns whether it holds.
template <typename Condition> [[nodiscard]] bool happens(Condition condition)
{
    return QTest::qWaitFor(condition, 10'000);
}

/// The descendants of a class. Unlike QObject::findChildren, this finds classes without Q_OBJECT.
template <typename Child> [[nodiscard]] QList<Child*> childrenOf(const QObject& parent)
{
    QList<Child*> found;
    for (auto* child : parent.findChildren<QObject*>())
        if (auto* wanted = dynamic_cast<Child*>(child))
            found << wanted;
    return found;
}

} // namespace stemvault

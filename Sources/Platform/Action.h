#pragma once

#include <functional>
#include <type_traits>
#include <utility>

namespace stemvault {

/// The work of a control or a menu row. A backend calls it on the main thread from the event loop,
/// once each time the user presses the control, and keeps a copy while it runs: the work may
/// replace or remove the control. A control with an empty action does nothing.
///
/// Menus and views are compared as values to see whether they must be drawn again. Two functions
/// cannot be compared, so two actions are equal when both are empty or neither is.
class Action {
public:
    Action() = default;
    template <typename Work>
    requires(std::is_invocable_v<Work> && !std::is_same_v<Work, Action>) Action(Work chosen)
        : work(std::move(chosen))
    {
    }

    explicit operator bool() const { return static_cast<bool>(work); }
    void operator()() const { work(); } ///< Must not be called on an empty action.

    [[nodiscard]] bool operator==(const Action& other) const
    {
        return static_cast<bool>(*this) == static_cast<bool>(other);
    }

private:
    std::function<void()> work;
};

} // namespace stemvault

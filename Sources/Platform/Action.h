#pragma once

#include <functional>
#include <type_traits>
#include <utility>

namespace stemvault {

/// What happens when the user uses a control. What is shown is compared as a value, so two actions
/// are equal when both are there or both are not.
class Action {
public:
    Action() = default;
    template <typename Work>
    requires(std::is_invocable_v<Work> && !std::is_same_v<Work, Action>) Action(Work chosen)
        : work(std::move(chosen))
    {
    }

    explicit operator bool() const { return static_cast<bool>(work); }
    void operator()() const { work(); }

    [[nodiscard]] bool operator==(const Action& other) const
    {
        return static_cast<bool>(*this) == static_cast<bool>(other);
    }

private:
    std::function<void()> work;
};

} // namespace stemvault

#pragma once

#include <memory>
#include <utility>

namespace stemvault {

/// Keeps deferred work from running after its owner is destroyed. Declare it as the last member, so
/// that it is destroyed first; what `guard` returned then does nothing. Guarded work must run on
/// the thread that destroys the owner.
class WeakGuard {
public:
    template <typename Work> [[nodiscard]] auto guard(Work work) const
    {
        return
            [token = std::weak_ptr<const char>(life), work = std::move(work)](auto&&... arguments) {
                if (!token.expired())
                    work(std::forward<decltype(arguments)>(arguments)...);
            };
    }

    /// A token for work on another thread, which may only check whether the owner still exists.
    [[nodiscard]] std::weak_ptr<const char> token() const { return life; }

    WeakGuard() = default;
    WeakGuard(const WeakGuard&) = delete;
    WeakGuard& operator=(const WeakGuard&) = delete;
    ~WeakGuard() = default;

private:
    std::shared_ptr<const char> life = std::make_shared<const char>();
};

} // namespace stemvault

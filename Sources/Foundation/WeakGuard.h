#pragma once

#include <memory>
#include <utility>

namespace stemvault {

/// Lets deferred work hold its owner weakly. Declare it as the last member, so that it dies first:
/// what `guard` returns then does nothing. Guarded work must run on the thread that ends the owner.
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

    /// A weak token for work on another thread, which may ask only whether the owner is gone.
    [[nodiscard]] std::weak_ptr<const char> token() const { return life; }

    WeakGuard() = default;
    WeakGuard(const WeakGuard&) = delete;
    WeakGuard& operator=(const WeakGuard&) = delete;
    ~WeakGuard() = default;

private:
    std::shared_ptr<const char> life = std::make_shared<const char>();
};

} // namespace stemvault

#pragma once

#include <functional>
#include <utility>

namespace stemvault {

/// Keeps the single instance of each long-lived class, in the order of their creation.
class SharedInstances {
public:
    /// For tests: destroys every instance, the newest first. The program itself never calls it.
    static void destroyAll();

private:
    template <typename T> friend class Shared;
    static void keep(std::function<void()> destroy);
};

/// Provides `shared()` for a class: one instance, created at first use and kept. Main thread only.
template <typename T> class Shared {
public:
    [[nodiscard]] static T& shared()
    {
        if (!instance) {
            instance = new T;
            SharedInstances::keep([] { delete std::exchange(instance, nullptr); });
        }
        return *instance;
    }

    /// Whether the instance exists; the call does not create it.
    [[nodiscard]] static bool isMade() { return instance != nullptr; }

    Shared(const Shared&) = delete;
    Shared& operator=(const Shared&) = delete;

protected:
    Shared() = default;
    ~Shared() = default;

private:
    static inline T* instance = nullptr;
};

} // namespace stemvault

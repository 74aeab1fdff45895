#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace stemvault {

/// Why something could not be done, in words a user can read.
struct Failure {
    std::string description;
    bool isTransient = false; ///< The item is still changing; a later attempt may succeed.
};

/// A value, or the reason why there is none. Shaped like std::expected, which may replace it later.
template <typename T> class [[nodiscard]] Result {
public:
    Result(T value) : content(std::move(value)) { }
    Result(Failure failure) : content(std::move(failure)) { }

    [[nodiscard]] bool has_value() const { return std::holds_alternative<T>(content); }
    explicit operator bool() const { return has_value(); }
    [[nodiscard]] const T& value() const { return std::get<T>(content); }
    [[nodiscard]] T& value() { return std::get<T>(content); }
    [[nodiscard]] const std::string& error() const
    {
        return std::get<Failure>(content).description;
    }

private:
    std::variant<T, Failure> content;
};

template <> class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Failure reason) : failure(std::move(reason)) { }

    [[nodiscard]] bool has_value() const { return !failure; }
    explicit operator bool() const { return has_value(); }
    [[nodiscard]] const std::string& error() const { return failure->description; }
    [[nodiscard]] bool isTransient() const { return failure && failure->isTransient; }

private:
    std::optional<Failure> failure;
};

} // namespace stemvault

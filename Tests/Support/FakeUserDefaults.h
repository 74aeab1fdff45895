#pragma once

#include "Platform/UserDefaults.h"

#include <chrono>
#include <map>
#include <optional>
#include <string>

namespace stemvault {

struct FakeUserDefaults : UserDefaults {
    [[nodiscard]] std::optional<std::string> data(const std::string& key) const override
    {
        return found(values, key);
    }
    [[nodiscard]] std::optional<std::string> string(const std::string& key) const override
    {
        return found(strings, key);
    }
    [[nodiscard]] std::optional<WallTime> date(const std::string& key) const override
    {
        return found(dates, key);
    }
    void setData(const std::string& key, const std::string& bytes) override
    {
        forget(key);
        values[key] = bytes;
        ++writes;
    }
    void setDate(const std::string& key, WallTime date) override
    {
        forget(key);
        dates[key] = std::chrono::floor<std::chrono::milliseconds>(date);
    }

    // What a test may do.
    std::map<std::string, std::string> values;
    std::map<std::string, WallTime> dates;
    std::map<std::string, std::string> strings;
    int writes = 0;

private:
    /// A key has only one value, of any type, so a new value replaces it.
    void forget(const std::string& key)
    {
        values.erase(key);
        dates.erase(key);
        strings.erase(key);
    }
    template <typename Map>
    [[nodiscard]] static std::optional<typename Map::mapped_type> found(
        const Map& map, const std::string& key)
    {
        const auto entry = map.find(key);
        return entry == map.end() ? std::nullopt : std::optional(entry->second);
    }
};

} // namespace stemvault

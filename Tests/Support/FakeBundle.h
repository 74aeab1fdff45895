#pragma once

#include "Platform/Bundle.h"

#include <optional>
#include <set>
#include <string>

namespace stemvault {

struct FakeBundle : Bundle {
    [[nodiscard]] std::optional<std::string> pathForResource(
        const std::string& name, const std::string& type) const override
    {
        return existing(name + "." + type, "/resources/" + name + "." + type);
    }
    [[nodiscard]] std::optional<Image> imageWithContentsOfFile(
        const std::string& path) const override
    {
        return existing(path, Image { path });
    }
    [[nodiscard]] std::optional<Image> imageNamed(const std::string& name) const override
    {
        return existing(name, Image { name });
    }
    [[nodiscard]] std::optional<Image> imageWithSystemSymbolName(
        const std::string& name, const std::string& description) const override
    {
        return existing(name, Image { "symbol:" + name, description });
    }
    [[nodiscard]] std::optional<std::string> shortVersionString() const override { return version; }

    // What a test may set.
    std::set<std::string> missing; ///< Names of resources, files, images and symbols.
    std::optional<std::string> version = "1.4";

private:
    template <typename Value>
    [[nodiscard]] std::optional<Value> existing(const std::string& name, const Value& value) const
    {
        return missing.contains(name) ? std::nullopt : std::optional(value);
    }
};

} // namespace stemvault

#include "StemvaultConnect/SettingsStore.h"

#include "Platform/Platform.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace stemvault {

namespace {

using nlohmann::json;

struct Stored {
    std::vector<StemvaultFolder> stemvaultFolders;
    std::optional<std::string> alwaysWatchPath;
    std::optional<std::string> projectsRootPath;
};

json encoded(const StemvaultFolder& folder)
{
    return { { "id", folder.id.uuidString() }, { "name", folder.name }, { "path", folder.path } };
}

/// Absent when a text is not UTF-8, which JSON cannot hold.
std::optional<std::string> encoded(const Stored& stored)
{
    json record = { { "stemvaultFolders", json::array() } };
    for (const StemvaultFolder& folder : stored.stemvaultFolders)
        record["stemvaultFolders"].push_back(encoded(folder));
    if (stored.alwaysWatchPath)
        record["alwaysWatchPath"] = *stored.alwaysWatchPath;
    if (stored.projectsRootPath)
        record["projectsRootPath"] = *stored.projectsRootPath;
    try {
        return record.dump();
    } catch (const json::type_error&) {
        return std::nullopt;
    }
}

const std::string* textMember(const json& object, const char* name)
{
    const auto member = object.find(name);
    return member == object.end() ? nullptr : member->get_ptr<const std::string*>();
}

std::optional<StemvaultFolder> decodedFolder(const json& object)
{
    if (!object.is_object())
        return std::nullopt;
    const std::string* idText = textMember(object, "id");
    const std::string* name = textMember(object, "name");
    const std::string* path = textMember(object, "path");
    if (!idText || !name || !path)
        return std::nullopt;
    const auto id = UUID::fromString(*idText);
    if (!id)
        return std::nullopt;
    return StemvaultFolder { *id, *name, *path };
}

/// Reads a member that may be missing or null; false when it is of another kind.
bool decodeOptionalText(const json& record, const char* name, std::optional<std::string>& text)
{
    const auto member = record.find(name);
    if (member == record.end() || member->is_null())
        return true;
    if (!member->is_string())
        return false;
    text = member->get<std::string>();
    return true;
}

std::optional<Stored> decoded(const std::string& bytes)
{
    const json record = json::parse(bytes, nullptr, false);
    if (!record.is_object())
        return std::nullopt;
    const auto folders = record.find("stemvaultFolders");
    if (folders == record.end() || !folders->is_array())
        return std::nullopt;
    Stored stored;
    for (const json& object : *folders) {
        auto folder = decodedFolder(object);
        if (!folder)
            return std::nullopt;
        stored.stemvaultFolders.push_back(std::move(*folder));
    }
    if (!decodeOptionalText(record, "alwaysWatchPath", stored.alwaysWatchPath)
        || !decodeOptionalText(record, "projectsRootPath", stored.projectsRootPath))
        return std::nullopt;
    return stored;
}

} // namespace

SettingsStore::SettingsStore()
{
    load();
}

void SettingsStore::load()
{
    const auto bytes = Platform::current().userDefaults.data(key);
    if (!bytes)
        return;
    auto stored = decoded(*bytes);
    if (!stored)
        return;
    // Each of these setters writes the record back; the last one writes it in normalized form.
    setStemvaultFolders(std::move(stored->stemvaultFolders));
    setAlwaysWatchPath(std::move(stored->alwaysWatchPath));
    setProjectsRootPath(std::move(stored->projectsRootPath));
}

void SettingsStore::save() const
{
    if (const auto bytes = encoded(Stored { folders, alwaysWatch, projectsRoot }))
        Platform::current().userDefaults.setData(key, *bytes);
}

void SettingsStore::setStemvaultFolders(std::vector<StemvaultFolder> newFolders)
{
    willChange();
    folders = std::move(newFolders);
    save();
}

void SettingsStore::setAlwaysWatchPath(std::optional<std::string> path)
{
    willChange();
    alwaysWatch = std::move(path);
    save();
}

void SettingsStore::setProjectsRootPath(std::optional<std::string> path)
{
    willChange();
    projectsRoot = std::move(path);
    save();
}

void SettingsStore::addFolder(const StemvaultFolder& folder)
{
    auto changed = folders;
    changed.push_back(folder);
    setStemvaultFolders(std::move(changed));
}

void SettingsStore::removeFolder(const UUID& id)
{
    auto changed = folders;
    std::erase_if(changed, [&id](const StemvaultFolder& folder) { return folder.id == id; });
    setStemvaultFolders(std::move(changed));
}

} // namespace stemvault

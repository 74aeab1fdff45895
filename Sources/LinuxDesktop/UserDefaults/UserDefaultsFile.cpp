#include "LinuxDesktop/UserDefaults/UserDefaultsFile.h"

#include "Foundation/HomeDirectory.h"
#include "Foundation/UnicodeText.h"
#include "LinuxDesktop/UserDefaults/Base64.h"
#include "LinuxDesktop/UserDefaults/DateText.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace stemvault {

namespace {

nlohmann::json entryFor(const std::string& bytes)
{
    if (isValidUTF8(bytes))
        return { { "data", bytes } };
    return { { "base64", base64Encoded(bytes) } };
}

std::optional<std::string> textIn(const nlohmann::json& entry, const char* kind)
{
    const auto found = entry.is_object() ? entry.find(kind) : entry.end();
    if (found == entry.end() || !found->is_string())
        return std::nullopt;
    return found->get<std::string>();
}

std::optional<std::string> bytesOf(const nlohmann::json& entry)
{
    if (auto text = textIn(entry, "data"))
        return text;
    const auto encoded = textIn(entry, "base64");
    return encoded ? base64Decoded(*encoded) : std::nullopt;
}

std::string environment(const char* name)
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing in the program changes the environment.
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

} // namespace

UserDefaultsFile::UserDefaultsFile(const std::string& path, Dispatch& queues, SystemCalls calls)
    : dispatch(queues), file(std::make_shared<RecordFile>(path, std::move(calls))),
      values(file->read())
{
}

std::string UserDefaultsFile::standardPath()
{
    const std::string folder = environment("XDG_CONFIG_HOME");
    // A relative path is invalid there and to be passed over.
    return (folder.starts_with('/') ? folder : homeDirectory() + "/.config")
        + "/stemvault/connect.json";
}

const nlohmann::json* UserDefaultsFile::entry(const std::string& key) const
{
    for (const nlohmann::json* record : { &changes, &values })
        if (const auto found = record->find(key); found != record->end())
            return &*found;
    return nullptr;
}

std::optional<std::string> UserDefaultsFile::data(const std::string& key) const
{
    const nlohmann::json* found = entry(key);
    return found != nullptr ? bytesOf(*found) : std::nullopt;
}

std::optional<std::string> UserDefaultsFile::string(const std::string& key) const
{
    const nlohmann::json* found = entry(key);
    return found != nullptr ? textIn(*found, "string") : std::nullopt;
}

std::optional<WallTime> UserDefaultsFile::date(const std::string& key) const
{
    const nlohmann::json* found = entry(key);
    const auto text = found != nullptr ? textIn(*found, "date") : std::nullopt;
    return text ? dateOfText(*text) : std::nullopt;
}

void UserDefaultsFile::setData(const std::string& key, const std::string& bytes)
{
    set(key, entryFor(bytes));
}

void UserDefaultsFile::setDate(const std::string& key, WallTime date)
{
    set(key, { { "date", textOfDate(date) } });
}

void UserDefaultsFile::set(const std::string& key, nlohmann::json changed)
{
    changes[key] = std::move(changed);
    ++version;
    scheduleWrite();
}

void UserDefaultsFile::scheduleWrite()
{
    if (!std::exchange(isBusy, true))
        dispatch.mainAsync(alive.guard([this] { write(); }));
}

void UserDefaultsFile::write()
{
    auto done = alive.guard([this, now = version](bool succeeded) { finish(now, succeeded); });
    dispatch.utilityAsync(
        [&queues = dispatch, target = file, now = version, record = changes, done] {
            const bool succeeded = target->merge(now, record);
            queues.mainAsync([done, succeeded]() mutable { done(succeeded); });
        });
}

void UserDefaultsFile::finish(std::uint64_t written, bool succeeded)
{
    isBusy = false;
    if (succeeded)
        savedVersion = std::max(savedVersion, written);
    if (written != version)
        scheduleWrite();
}

void UserDefaultsFile::synchronize()
{
    if (savedVersion != version && file->merge(version, changes))
        savedVersion = version;
}

} // namespace stemvault

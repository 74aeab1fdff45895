#include "LinuxDesktop/UserDefaults/UserDefaultsFile.h"

#include "Foundation/Environment.h"
#include "Foundation/UnicodeText.h"
#include "LinuxDesktop/UserDefaults/DateText.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace stemvault::user_defaults {

namespace {

std::optional<std::string> textIn(const nlohmann::json& entry, const char* kind)
{
    const auto found = entry.is_object() ? entry.find(kind) : entry.end();
    if (found == entry.end() || !found->is_string())
        return std::nullopt;
    return found->get<std::string>();
}

} // namespace

UserDefaultsFile::UserDefaultsFile(const std::string& path, Dispatch& queues, SystemCalls calls)
    : dispatch(queues), file(std::make_shared<RecordFile>(path, std::move(calls))),
      values(file->read())
{
}

std::string UserDefaultsFile::standardPath()
{
    return configurationFolder() + "/stemvault/connect.json";
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
    return found != nullptr ? textIn(*found, "data") : std::nullopt;
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
    assert(isValidUTF8(bytes));
    set(key, { { "data", bytes } });
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

} // namespace stemvault::user_defaults

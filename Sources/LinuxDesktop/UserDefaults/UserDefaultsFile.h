#pragma once

#include "Foundation/WeakGuard.h"
#include "LinuxDesktop/UserDefaults/RecordFile.h"
#include "Platform/Dispatch.h"
#include "Platform/UserDefaults.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace stemvault::user_defaults {

/// The user's settings in one JSON file: each key has an object that names the kind of its value,
/// {"data": "text"}, {"string": "text"}, and {"date": "2026-03-01T09:30:00.125Z"}. Entries of other
/// kinds are kept as they are.
///
/// Changes are written on the utility queue, after all main-queue work that was waiting when the
/// first of them was made. They are written together, and only one write runs at a time. A change
/// that cannot be written stays in memory and is retried with the next one.
class UserDefaultsFile : public UserDefaults {
public:
    /// Reads the file. `queues` must outlive this object.
    UserDefaultsFile(const std::string& path, Dispatch& queues, SystemCalls calls = {});

    /// The path of the user's settings: stemvault/connect.json in the configuration folder.
    [[nodiscard]] static std::string standardPath();

    [[nodiscard]] std::optional<std::string> data(const std::string& key) const override;
    [[nodiscard]] std::optional<std::string> string(const std::string& key) const override;
    [[nodiscard]] std::optional<WallTime> date(const std::string& key) const override;
    void setData(const std::string& key, const std::string& bytes) override;
    void setDate(const std::string& key, WallTime date) override;

    /// Writes pending changes before it returns. Call it when the program is about to end.
    void synchronize();

private:
    [[nodiscard]] const nlohmann::json* entry(const std::string& key) const;
    void set(const std::string& key, nlohmann::json changed);
    void scheduleWrite();
    void write();
    void finish(std::uint64_t written, bool succeeded);

    Dispatch& dispatch;
    std::shared_ptr<RecordFile> file; ///< Shared with a write that is under way.
    nlohmann::json values; ///< As read at the start.
    nlohmann::json changes = nlohmann::json::object(); ///< Made since then.
    std::uint64_t version = 0; ///< Counts changes.
    std::uint64_t savedVersion = 0;
    bool isBusy = false; ///< A write is scheduled or under way.
    WeakGuard alive;
};

} // namespace stemvault::user_defaults

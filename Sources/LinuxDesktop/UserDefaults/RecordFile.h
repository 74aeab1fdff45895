#pragma once

#include "FileManager/FileCopy.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

namespace stemvault::user_defaults {

/// Parses a text as a JSON object; absent if it is not one, or is nested too deeply to be handled.
[[nodiscard]] std::optional<nlohmann::json> parsedRecord(const std::string& text);

/// One JSON object in a file, safe against crashes and failed writes: the file always holds a whole
/// record, the old or the new, and content that this program has not read is never dropped. May be
/// used from any thread.
class RecordFile {
public:
    /// `path` may be a link; then the file that it leads to is written, and the link stays.
    explicit RecordFile(std::string path, SystemCalls calls = {});

    /// The record, empty if there is none. A file that holds no record is moved aside.
    [[nodiscard]] nlohmann::json read();

    /// Puts the entries of `changes` into the record on disk and keeps all others. Writes nothing
    /// if they are there already, or if a call with a later `version` came first. False if the
    /// record could not be written; then it is unchanged.
    [[nodiscard]] bool merge(std::uint64_t version, const nlohmann::json& changes);

private:
    enum class Found { Nothing, Record, Unreadable };

    Found load(nlohmann::json& record);
    [[nodiscard]] bool moveAside() const;
    [[nodiscard]] bool keepUnread() const;
    [[nodiscard]] bool write(const std::string& text) const;

    std::string path;
    CopyOptions options;
    std::mutex mutex;
    std::uint64_t latest = 0;
    nlohmann::json known = nlohmann::json::object(); ///< As last read or written.
    bool wasRead = false; ///< Whether `known` includes the file's content when this run began.
};

} // namespace stemvault::user_defaults

#pragma once

#include "FileManager/FileCopy.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

namespace stemvault {

/// The JSON object that a text is; absent when it is none, or one too deeply nested to be handled.
[[nodiscard]] std::optional<nlohmann::json> parsedRecord(const std::string& text);

/// One JSON object in a file that survives whatever happens to it: the file always holds a whole
/// record, the old or the new, and nothing that this program did not read is ever dropped. Safe
/// from every thread.
class RecordFile {
public:
    /// `path` may be a link; the file it leads to is written then, and the link stays.
    explicit RecordFile(std::string path, SystemCalls calls = {});

    /// The record, empty if there is none. A file that holds no record is moved aside.
    [[nodiscard]] nlohmann::json read();

    /// Puts the entries of `changes` into the record on disk and leaves the others as they are.
    /// Nothing is written when they are there already, or when a call with a later `version` came
    /// first. False if the record could not be written: it is as it was then.
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
    bool wasRead = false; ///< Whether `known` includes what the file held when this run began.
};

} // namespace stemvault

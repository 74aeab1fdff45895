#include "LinuxDesktop/UserDefaults/RecordFile.h"

#include "FileManager/DirectoryAccess.h"
#include "FileManager/StagedItem.h"
#include "FileManager/TemporaryItem.h"
#include "Foundation/JSONNesting.h"
#include "Foundation/PathText.h"

#include <cerrno>
#include <ctime>
#include <filesystem>
#include <utility>

namespace stemvault::user_defaults {

namespace {

/// The path to write to: the end of a chain of links. It need not exist.
std::string followed(std::string path)
{
    constexpr int maxLinks = 40;
    std::error_code error;
    for (int i = 0; i < maxLinks; ++i) {
        const auto target = std::filesystem::read_symlink(path, error);
        if (error)
            break;
        path = (std::filesystem::path(path).parent_path() / target).string();
    }
    return path;
}

std::optional<std::string> contentOf(const std::string& path)
{
    const FileDescriptor file = openPath(path, O_RDONLY | O_NONBLOCK);
    std::string content;
    char buffer[16384];
    for (ssize_t got = 1; file && got != 0;) {
        got = ::read(file.get(), buffer, sizeof buffer);
        if (got < 0)
            return std::nullopt;
        content.append(buffer, static_cast<std::size_t>(got));
    }
    return file ? std::optional(content) : std::nullopt;
}

std::string timestamp()
{
    const std::time_t now = std::time(nullptr);
    std::tm utc {};
    ::gmtime_r(&now, &utc);
    char text[32];
    return { text, std::strftime(text, sizeof text, "%Y%m%dT%H%M%SZ", &utc) };
}

/// Calls `call` with "<path>.<kind>-<time>", and while that name is taken, with a number appended.
template <typename Call> bool underFreeName(const std::string& path, const char* kind, Call call)
{
    constexpr int attempts = 100;
    const std::string name = path + "." + kind + "-" + timestamp();
    for (int i = 1; i <= attempts; ++i) {
        if (call((i == 1 ? name : name + "-" + std::to_string(i)).c_str()) == 0)
            return true;
        if (errno != EEXIST)
            break;
    }
    return false;
}

bool makeFolders(const std::string& path)
{
    if (::mkdir(path.c_str(), S_IRWXU) == 0 || errno == EEXIST)
        return true;
    return errno == ENOENT && path.size() > 1 && makeFolders(deletingLastPathComponent(path))
        && ::mkdir(path.c_str(), S_IRWXU) == 0;
}

bool writeAll(const SystemCalls& calls, int file, const std::string& text)
{
    for (std::size_t at = 0; at < text.size();) {
        const ssize_t written =
            calls.pwrite(file, text.data() + at, text.size() - at, static_cast<off_t>(at));
        if (written <= 0)
            return false;
        at += static_cast<std::size_t>(written);
    }
    return calls.fsync(file) == 0;
}

} // namespace

std::optional<nlohmann::json> parsedRecord(const std::string& text)
{
    if (isNestedTooDeeply(text))
        return std::nullopt;
    auto parsed = nlohmann::json::parse(text, nullptr, false);
    return parsed.is_object() ? std::optional(std::move(parsed)) : std::nullopt;
}

RecordFile::RecordFile(std::string file, SystemCalls calls) : path(std::move(file))
{
    options.ifExists = IfExists::Replace;
    options.calls = std::move(calls);
}

nlohmann::json RecordFile::read()
{
    const std::lock_guard lock(mutex);
    wasRead = load(known) != Found::Unreadable;
    return known;
}

bool RecordFile::merge(std::uint64_t version, const nlohmann::json& changes)
{
    const std::lock_guard lock(mutex);
    if (version < latest)
        return true;
    latest = version;
    nlohmann::json merged = known;
    const Found found = load(merged);
    if (found == Found::Unreadable)
        return false;
    const nlohmann::json onDisk = merged;
    merged.update(changes);
    if (found == Found::Record && merged == onDisk)
        return true;
    if (found == Found::Record && !wasRead && !keepUnread())
        return false;
    constexpr auto replace = nlohmann::json::error_handler_t::replace;
    if (!write(merged.dump(2, ' ', false, replace) + "\n"))
        return false;
    known = std::move(merged);
    wasRead = true;
    return true;
}

// A file that cannot be read, or that holds no record and cannot be moved aside, must not be
// overwritten.
RecordFile::Found RecordFile::load(nlohmann::json& record)
{
    const auto text = contentOf(path);
    if (!text)
        return errno == ENOENT ? Found::Nothing : Found::Unreadable;
    auto parsed = parsedRecord(*text);
    if (!parsed)
        return moveAside() ? Found::Nothing : Found::Unreadable;
    record = *std::move(parsed);
    return Found::Record;
}

bool RecordFile::moveAside() const
{
    const std::string file = followed(path);
    return underFreeName(file, "damaged", [&](const char* name) {
        return options.calls.renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, name, RENAME_NOREPLACE);
    });
}

// Keeps the file under another name, because it could not be read when this run began, so the user
// never saw its content.
bool RecordFile::keepUnread() const
{
    const std::string file = followed(path);
    return underFreeName(file, "unread", [&](const char* name) {
        return options.calls.linkat(AT_FDCWD, file.c_str(), AT_FDCWD, name, 0);
    });
}

bool RecordFile::write(const std::string& text) const
{
    const std::string file = followed(path);
    const std::string parent = deletingLastPathComponent(file);
    if (!makeFolders(parent))
        return false;
    const FileDescriptor folder = openFolder(parent);
    if (!folder)
        return false;
    removeLeftovers(folder.get(), options.leftoverAge);
    StagedItem staged(folder.get(), lastPathComponent(file), options);
    if (!staged.createUnnamedFile() && !staged.createFile())
        return false;
    return writeAll(options.calls, staged.item(), text) && staged.linkTemporaryName()
        && !staged.commit();
}

} // namespace stemvault::user_defaults

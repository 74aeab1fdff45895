#include "StemvaultConnect/FolderPresence.h"

#include "FileManager/FileManager.h"
#include "Foundation/PathText.h"
#include "Platform/Platform.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <utility>

namespace stemvault {

namespace {

using namespace std::chrono_literals;

constexpr auto stuckAfter = 1s;

// A walk that hangs blocks one background thread until its drive responds. One more walk may check
// the other folders; the remaining threads are left to scans and copies.
constexpr std::size_t maxWalks = 2;

} // namespace

/// One pass through a list of folders.
struct FolderPresence::Walk {
    std::vector<std::string> paths;
    std::vector<bool> wasMissing; ///< Only differences from this are reported.
    std::atomic<std::size_t> position = 0; ///< The index of the folder that is being checked.
    std::atomic<bool> isAbandoned = false; ///< Stuck; the rest was left to another walk.
};

FolderPresence::FolderPresence() = default;
FolderPresence::~FolderPresence() = default;

void FolderPresence::look(std::vector<std::string> paths)
{
    const bool isOnTheWay =
        std::ranges::any_of(walks, [](const auto& walk) { return !walk->isAbandoned; });
    if (isOnTheWay || walks.size() == maxWalks)
        next = std::move(paths);
    else
        begin(withoutStuck(std::move(paths)));
}

void FolderPresence::begin(std::vector<std::string> paths)
{
    if (paths.empty())
        return;
    const auto walk = std::make_shared<Walk>();
    walk->paths = std::move(paths);
    for (const std::string& path : walk->paths)
        walk->wasMissing.push_back(isMissing(path));
    walks.push_back(walk);

    const auto found = alive.guard(
        [this](const std::string& path, bool isMissingNow) { apply(path, isMissingNow); });
    const auto ended = alive.guard([this, walk] { end(walk); });
    Dispatch& dispatch = Platform::current().dispatch;
    dispatch.utilityAsync([&dispatch, walk, found, ended] {
        for (; walk->position < walk->paths.size() && !walk->isAbandoned; ++walk->position) {
            const std::string& path = walk->paths[walk->position];
            const bool isMissingNow = !FileManager::itemKind(path);
            if (isMissingNow != walk->wasMissing[walk->position])
                dispatch.mainAsync([found, path, isMissingNow] { found(path, isMissingNow); });
        }
        dispatch.mainAsync(ended);
    });
    superviseProgress(walk, walk->paths.size());
}

void FolderPresence::apply(const std::string& path, bool isMissingNow)
{
    const bool changed = isMissingNow ? missing.insert(path).second : missing.erase(path) > 0;
    if (changed && onChange)
        onChange();
}

void FolderPresence::end(const std::shared_ptr<Walk>& walk)
{
    std::erase(walks, walk);
    auto paths = std::exchange(next, {});
    // The drive was only slow: check the folders next to the slow one, which were left out so far.
    if (paths.empty() && walk->isAbandoned)
        paths.assign(walk->paths.begin() + static_cast<std::ptrdiff_t>(walk->position.load()),
            walk->paths.end());
    if (!paths.empty())
        look(std::move(paths));
}

// A walk that has made no progress between two checks is stuck.
void FolderPresence::superviseProgress(const std::shared_ptr<Walk>& walk, std::size_t lastPosition)
{
    Platform::current().dispatch.mainAsyncAfter(stuckAfter, alive.guard([this, walk, lastPosition] {
        if (std::ranges::find(walks, walk) == walks.end())
            return;
        if (const std::size_t position = walk->position; position != lastPosition)
            superviseProgress(walk, position);
        else
            abandon(walk);
    }));
}

void FolderPresence::abandon(const std::shared_ptr<Walk>& walk)
{
    walk->isAbandoned = true;
    const auto after = std::min<std::size_t>(walk->position + 1, walk->paths.size());
    auto paths = next.empty()
        ? std::vector(walk->paths.begin() + static_cast<std::ptrdiff_t>(after), walk->paths.end())
        : std::exchange(next, {});
    if (walks.size() < maxWalks)
        begin(withoutStuck(std::move(paths)));
    else
        next = std::move(paths);
}

// The siblings of a folder that does not respond are unlikely to respond either.
std::vector<std::string> FolderPresence::withoutStuck(std::vector<std::string> paths) const
{
    for (const auto& walk : walks) {
        const std::size_t position = walk->position;
        if (position >= walk->paths.size())
            continue;
        const auto stuckIn = deletingLastPathComponent(walk->paths[position]);
        std::erase_if(paths, [&stuckIn](const std::string& path) {
            return deletingLastPathComponent(path) == stuckIn;
        });
    }
    return paths;
}

} // namespace stemvault

#include "StemvaultConnect/FolderCheckQueue.h"

#include "Platform/Platform.h"

#include <utility>

namespace stemvault {

namespace {

// With two roots, at most half of the backend's threads for `Dropped` work can hang.
constexpr std::size_t maxPerRoot = 4;

} // namespace

FolderCheckQueue::FolderCheckQueue() = default;
FolderCheckQueue::~FolderCheckQueue() = default;

void FolderCheckQueue::ask(const std::string& root, const std::string& folder, Check look)
{
    Folder& asked = folders[folder];
    asked.waiting.push_back(std::move(look));
    if (asked.isUnderWay || asked.waiting.size() > 1)
        return;
    roots[root].ready.push_back(folder);
    beginNext(root);
}

void FolderCheckQueue::dropWaiting()
{
    for (auto& [path, root] : roots)
        root.ready.clear();
    for (auto& [path, folder] : folders)
        folder.waiting.clear();
    std::erase_if(folders, [](const auto& entry) { return !entry.second.isUnderWay; });
    std::erase_if(roots, [](const auto& entry) { return entry.second.underWay == 0; });
}

void FolderCheckQueue::beginNext(const std::string& path)
{
    Root& root = roots[path];
    while (root.underWay < maxPerRoot && !root.ready.empty()) {
        ++root.underWay;
        begin(path, std::exchange(root.ready.front(), {}));
        root.ready.pop_front();
    }
    if (root.underWay == 0)
        roots.erase(path);
}

void FolderCheckQueue::begin(const std::string& root, const std::string& path)
{
    Folder& folder = folders[path];
    folder.isUnderWay = true;
    Check look = std::move(folder.waiting.front());
    folder.waiting.pop_front();

    const auto ended = alive.guard([this, root, path](const Work& answer) {
        end(root, path);
        answer();
    });
    Dispatch& dispatch = Platform::current().dispatch;
    dispatch.utilityAsync([&dispatch, look = std::move(look), ended] {
        dispatch.mainAsync([ended, answer = look()] { ended(answer); });
    });
}

void FolderCheckQueue::end(const std::string& root, const std::string& path)
{
    const auto folder = folders.find(path);
    folder->second.isUnderWay = false;
    --roots[root].underWay;
    if (folder->second.waiting.empty())
        folders.erase(folder);
    else
        roots[root].ready.push_back(path);
    beginNext(root);
}

} // namespace stemvault

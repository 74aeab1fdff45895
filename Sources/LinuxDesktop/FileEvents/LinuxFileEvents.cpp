#include "LinuxDesktop/FileEvents/LinuxFileEvents.h"

#include "LinuxDesktop/FileEvents/InotifyStream.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace stemvault::file_events {

namespace {

/// Passes batches from a stream's thread to the main queue. After `close` it drops them, so the
/// queue may be destroyed before the thread has ended.
class DeliveryChannel {
public:
    DeliveryChannel(Dispatch& mainQueue, std::weak_ptr<const FileEventHandler> receiver)
        : dispatch(&mainQueue), handler(std::move(receiver))
    {
    }

    void close()
    {
        const std::lock_guard lock(mutex);
        dispatch = nullptr;
    }

    void deliver(EventBatch batch)
    {
        const std::lock_guard lock(mutex);
        if (dispatch == nullptr)
            return;
        dispatch->mainAsync(
            [receiver = handler, events = std::make_shared<EventBatch>(std::move(batch))] {
                if (const auto running = receiver.lock())
                    (*running)(events->paths, events->flags);
            });
    }

private:
    std::mutex mutex;
    Dispatch* dispatch;
    std::weak_ptr<const FileEventHandler> handler;
};

bool isWithin(const std::string& path, const std::string& folder)
{
    return path.starts_with(folder)
        && (path.size() == folder.size() || folder.ends_with('/') || path[folder.size()] == '/');
}

/// Groups the folders that lie within each other. Each group is watched on its own thread, so that
/// an unresponsive drive does not block the other groups.
std::vector<std::vector<std::string>> grouped(const std::vector<std::string>& paths)
{
    std::vector<std::vector<std::string>> groups;
    for (const std::string& path : paths) {
        std::vector<std::string> group { path };
        std::erase_if(groups, [&](const std::vector<std::string>& other) {
            const bool isNear = std::ranges::any_of(other, [&](const std::string& folder) {
                return isWithin(path, folder) || isWithin(folder, path);
            });
            if (isNear)
                group.insert(group.end(), other.begin(), other.end());
            return isNear;
        });
        groups.push_back(std::move(group));
    }
    return groups;
}

class LinuxFileEventStream final : public FileEventStream {
public:
    LinuxFileEventStream(
        Dispatch& mainQueue, FileEventHandler receiver, StreamOptions streamOptions)
        : dispatch(mainQueue), handler(std::move(receiver)), options(std::move(streamOptions))
    {
    }

    ~LinuxFileEventStream() override { LinuxFileEventStream::stop(); }

    void start() override
    {
        if (channel || isInvalid)
            return;
        // Queued batches hold the handler weakly and lock it only while it runs, so the handler may
        // stop or destroy its own stream.
        running = std::make_shared<const FileEventHandler>(handler);
        channel = std::make_shared<DeliveryChannel>(dispatch, running);
        StreamOptions ofGroup = options;
        for (auto& group : grouped(options.paths)) {
            ofGroup.paths = std::move(group);
            streams.push_back(InotifyStream::create(
                ofGroup, [to = channel](EventBatch batch) { to->deliver(std::move(batch)); }));
        }
    }

    void stop() override
    {
        if (channel)
            channel->close();
        running.reset();
        channel.reset();
        streams.clear();
    }

    void invalidate() override
    {
        stop();
        isInvalid = true;
    }

private:
    Dispatch& dispatch;
    FileEventHandler handler;
    StreamOptions options;
    std::shared_ptr<const FileEventHandler> running;
    std::shared_ptr<DeliveryChannel> channel;
    std::vector<std::unique_ptr<InotifyStream>> streams;
    bool isInvalid = false;
};

} // namespace

std::unique_ptr<FileEventStream> LinuxFileEvents::createStream(FileEventHandler handler,
    const std::vector<std::string>& paths, std::chrono::milliseconds latency, std::uint32_t flags)
{
    if (!handler || paths.empty())
        return nullptr;
    const auto first = (flags & FileEventStreamFlag::NoDefer) != 0
        ? EventCoalescer::FirstEvent::AtOnce
        : EventCoalescer::FirstEvent::Gathered;
    return std::make_unique<LinuxFileEventStream>(dispatch, std::move(handler),
        StreamOptions { .paths = paths, .latency = latency, .firstEvent = first });
}

} // namespace stemvault::file_events

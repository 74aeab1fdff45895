#include "LinuxDesktop/FileEvents/LinuxFileEvents.h"

#include "LinuxDesktop/FileEvents/InotifyStream.h"

#include <mutex>
#include <utility>

namespace stemvault {

namespace {

/// The way from a stream's thread to the main queue. Once it is shut nothing takes it, so that
/// the queue may go before the thread does.
class Outlet {
public:
    Outlet(Dispatch& mainQueue, std::weak_ptr<const FileEventHandler> receiver)
        : dispatch(&mainQueue), handler(std::move(receiver))
    {
    }

    void shut()
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
        if (stream || isInvalid)
            return;
        // What is on its way to the main queue holds this weakly, the handler itself strongly
        // while it runs, so a handler may stop or destroy its own stream.
        running = std::make_shared<const FileEventHandler>(handler);
        outlet = std::make_shared<Outlet>(dispatch, running);
        stream = InotifyStream::create(
            options, [way = outlet](EventBatch batch) { way->deliver(std::move(batch)); });
    }

    void stop() override
    {
        if (outlet)
            outlet->shut();
        running.reset();
        outlet.reset();
        stream.reset();
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
    std::shared_ptr<Outlet> outlet;
    std::unique_ptr<InotifyStream> stream;
    bool isInvalid = false;
};

} // namespace

std::unique_ptr<FileEventStream> LinuxFileEvents::createStream(FileEventHandler handler,
    const std::vector<std::string>& paths, std::chrono::milliseconds latency, std::uint32_t flags)
{
    if (!handler || paths.empty())
        return nullptr;
    const auto first = (flags & FileEventStreamFlag::NoDefer) != 0
        ? EventWindow::FirstEvent::AtOnce
        : EventWindow::FirstEvent::Gathered;
    return std::make_unique<LinuxFileEventStream>(dispatch, std::move(handler),
        StreamOptions { .paths = paths, .latency = latency, .firstEvent = first });
}

} // namespace stemvault

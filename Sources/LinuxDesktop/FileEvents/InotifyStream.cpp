#include "LinuxDesktop/FileEvents/InotifyStream.h"

#include "Foundation/FileDescriptor.h"

#include <atomic>
#include <csignal>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <system_error>
#include <thread>
#include <utility>

namespace stemvault {

namespace {

/// The kernel takes its time to free a descriptor's watches, and a user has 128 descriptors. A
/// stream that begins while this many others are still ending waits for one of them.
constexpr int mostEnding = 8;
std::atomic<int> ending { 0 };

/// Signals are the main thread's business.
class SignalsBlocked {
public:
    SignalsBlocked()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &former);
    }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &former, nullptr); }

private:
    sigset_t former {};
};

} // namespace

struct InotifyStream::Shared {
    Shared(StreamOptions wanted, StreamWorker::Deliver deliverBatch, StreamWorker::Ready tellReady,
        InotifyCalls& systemCalls)
        : options(std::move(wanted)), deliver(std::move(deliverBatch)), ready(std::move(tellReady)),
          calls(systemCalls)
    {
    }

    StreamOptions options;
    StreamWorker::Deliver deliver;
    StreamWorker::Ready ready;
    InotifyCalls& calls;
    FileTime began = wallClock();
    FileDescriptor wakeUp { eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK) };
    std::atomic<bool> mustEnd { false };

    void end()
    {
        mustEnd = true;
        eventfd_write(wakeUp.get(), 1);
    }

    void awaitTurn()
    {
        pollfd awaiting { wakeUp.get(), POLLIN, 0 };
        while (!mustEnd && ending >= mostEnding)
            poll(&awaiting, 1, 5);
    }

    void run()
    {
        awaitTurn();
        if (mustEnd)
            return;
        {
            StreamWorker worker(options, calls, began, mustEnd, wakeUp.get());
            worker.run(deliver, ready);
            ++ending;
        }
        --ending;
    }
};

std::unique_ptr<InotifyStream> InotifyStream::create(const StreamOptions& options,
    StreamWorker::Deliver deliver, StreamWorker::Ready ready, InotifyCalls& calls)
{
    auto shared = std::make_shared<Shared>(options, std::move(deliver), std::move(ready), calls);
    if (!shared->wakeUp)
        return nullptr;
    try {
        const SignalsBlocked blocked;
        std::thread([shared] {
            pthread_setname_np(pthread_self(), "file-events");
            shared->run();
        }).detach();
    } catch (const std::system_error&) {
        return nullptr;
    }
    return std::unique_ptr<InotifyStream>(new InotifyStream(std::move(shared)));
}

InotifyStream::InotifyStream(std::shared_ptr<Shared> running) : shared(std::move(running)) { }

InotifyStream::~InotifyStream()
{
    shared->end();
}

} // namespace stemvault

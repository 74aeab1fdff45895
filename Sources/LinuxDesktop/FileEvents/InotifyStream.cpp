#include "LinuxDesktop/FileEvents/InotifyStream.h"

#include "Foundation/FileDescriptor.h"

#include <atomic>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <pthread.h>
#include <sys/eventfd.h>
#include <system_error>
#include <thread>
#include <utility>

namespace stemvault::file_events {

namespace {

/// The kernel takes a while to free the watches of a descriptor, and a user may have 128 inotify
/// descriptors. A stream that starts while this many others are still ending waits for one of them.
constexpr int maxEnding = 8;

class EndingStreams {
public:
    /// Waits until fewer than `maxEnding` streams are ending, or until `isStopping` has been set
    /// and `notify` called.
    void awaitTurn(const std::atomic<bool>& isStopping)
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return isStopping || count < maxEnding; });
    }

    void add(int difference)
    {
        {
            const std::lock_guard lock(mutex);
            count += difference;
        }
        changed.notify_all();
    }

    void notify() { add(0); }

    /// Never destroyed, because a stream's thread may run for a moment after main has returned.
    [[nodiscard]] static EndingStreams& all()
    {
        static EndingStreams& streams = *new EndingStreams;
        return streams;
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    int count = 0;
};

/// Blocks all signals while it exists. A thread created meanwhile inherits the mask, so that
/// signals go to the main thread.
class SignalsBlocked {
public:
    SignalsBlocked()
    {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &former);
    }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;
    ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &former, nullptr); }

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
    FileDescriptor wakeUp { ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK) };
    std::atomic<bool> isStopping { false };

    void end()
    {
        isStopping = true;
        ::eventfd_write(wakeUp.get(), 1);
        EndingStreams::all().notify();
    }

    void run()
    {
        EndingStreams::all().awaitTurn(isStopping);
        if (isStopping)
            return;
        {
            StreamWorker worker(options, calls, began, isStopping, wakeUp.get());
            worker.run(deliver, ready);
            EndingStreams::all().add(1);
        }
        EndingStreams::all().add(-1);
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
            ::pthread_setname_np(::pthread_self(), "file-events");
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

} // namespace stemvault::file_events

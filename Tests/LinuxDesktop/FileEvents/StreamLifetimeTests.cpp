#include "LinuxDesktop/FileEvents/LinuxFileEvents.h"
#include "LinuxDesktop/FileEvents/StreamStage.h"
#include "Platform/FileEvents.h"
#include "Support/FakeDispatch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <thread>
#include <vector>

namespace stemvault::file_events {
namespace {

using namespace std::chrono_literals;

/// A main queue whose work the test runs.
class MainQueue final : public FakeDispatch {
public:
    void mainAsync(Work work) override
    {
        const std::lock_guard lock(mutex);
        queue.push_back(std::move(work));
        added.notify_all();
    }

    /// Takes the next piece of work from the queue; absent if none arrives in time.
    std::optional<Work> next(std::chrono::milliseconds timeout)
    {
        std::unique_lock lock(mutex);
        if (!added.wait_for(lock, timeout, [this] { return !queue.empty(); }))
            return std::nullopt;
        Work work = std::move(queue.front());
        queue.pop_front();
        return work;
    }

private:
    std::mutex mutex;
    std::condition_variable added;
    std::deque<Work> queue;
};

class StreamLifetime : public testing::Test {
protected:
    std::unique_ptr<FileEventStream> makeStream(const std::string& root)
    {
        auto stream = events.createStream(
            [this](const auto& paths, const auto& flags) {
                EXPECT_EQ(paths.size(), flags.size());
                received.insert(received.end(), paths.begin(), paths.end());
                onReceived();
            },
            { root }, 500ms, FileEventStreamFlag::NoDefer | FileEventStreamFlag::FileEvents);
        stream->start();
        return stream;
    }

    /// Creates files until one is delivered, which shows that the stream is watching.
    Work awaitDelivery()
    {
        for (int attempt = 0; attempt < 1000; ++attempt) {
            folder.write(std::to_string(attempt), "x");
            if (auto work = queue.next(20ms))
                return *work;
        }
        ADD_FAILURE() << "nothing was delivered";
        return [] {};
    }

    TemporaryFolder folder;
    MainQueue queue;
    LinuxFileEvents events { queue };
    std::vector<std::string> received;
    std::function<void()> onReceived = [] {};
};

std::ptrdiff_t count(const char* folder)
{
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

/// Waits until there are no more threads and descriptors than before.
void expectBackTo(std::ptrdiff_t threads, std::ptrdiff_t descriptors)
{
    const auto deadline = std::chrono::steady_clock::now() + 30s;
    while (count("/proc/self/task") > threads || count("/proc/self/fd") > descriptors)
        ASSERT_LT(std::chrono::steady_clock::now(), deadline)
            << count("/proc/self/task") << " threads, " << count("/proc/self/fd") << " descriptors";
}

TEST_F(StreamLifetime, IsNotMadeWithoutFoldersOrHandler)
{
    EXPECT_FALSE(events.createStream([](const auto&, const auto&) {}, {}, 500ms, 0));
    EXPECT_FALSE(events.createStream({}, { folder.path() }, 500ms, 0));
}

TEST_F(StreamLifetime, DeliversWhatWasWrittenBeforeItsFolderWasWatched)
{
    std::set<std::string> missing;
    for (int made = 0; made < 1000; ++made) {
        const std::string name = std::to_string(made);
        folder.write(name + "/old", "x");
        if (made % 100 == 0)
            missing.insert(folder.write(name + "/mix", "x"));
        else if (made % 100 == 50)
            missing.insert(folder.path(name + "/mix")); // Created after the stream's start.
    }
    const TemporaryFolder elsewhere;
    age(elsewhere.path("clock"), 20ms);
    const auto stream = makeStream(folder.path());
    for (const std::string& path : missing)
        std::ofstream(path, std::ios::app) << "more";
    while (!missing.empty()) {
        const auto work = queue.next(10s);
        ASSERT_TRUE(work) << *missing.begin() << " was not delivered";
        (*work)();
        for (const std::string& path : received) {
            EXPECT_TRUE(path.ends_with("/mix")) << path;
            missing.erase(path);
        }
    }
}

TEST_F(StreamLifetime, CallsNobodyAfterStopHoweverMuchIsOnItsWay)
{
    auto stream = makeStream(folder.path());
    const Work late = awaitDelivery();
    stream->stop();
    late();
    EXPECT_THAT(received, testing::IsEmpty());

    stream->start();
    awaitDelivery()();
    EXPECT_THAT(received, testing::Not(testing::IsEmpty()));

    stream->invalidate();
    stream->start();
    folder.write("unseen", "x");
    EXPECT_FALSE(queue.next(600ms)) << "an invalidated stream does not start again";
}

TEST_F(StreamLifetime, MayBeDestroyedFromWithinItsHandler)
{
    auto stream = makeStream(folder.path());
    const Work work = awaitDelivery();
    onReceived = [&] { stream.reset(); };
    work();
    EXPECT_FALSE(stream);
    EXPECT_THAT(received, testing::Not(testing::IsEmpty()));
}

TEST_F(StreamLifetime, EndsWithoutWaitingAndLeavesNothingBehind)
{
    for (int made = 0; made < 2000; ++made)
        folder.makeFolder(std::to_string(made / 40) + "/" + std::to_string(made));
    // A sanitizer starts a background thread along with our first thread.
    std::thread([] {}).join();
    const std::ptrdiff_t threads = count("/proc/self/task");
    const std::ptrdiff_t descriptors = count("/proc/self/fd");
    std::vector<std::chrono::nanoseconds> stops(1000);
    for (int cycle = 0; auto& time : stops) {
        const auto stream = makeStream(folder.path());
        // Gives some streams time to set watches.
        if (cycle % 50 == 0)
            static_cast<void>(queue.next(std::chrono::milliseconds(cycle / 50)));
        ++cycle;
        const auto before = std::chrono::steady_clock::now();
        stream->stop();
        time = std::chrono::steady_clock::now() - before;
    }
    // The median, because on a busy machine a single stop may have to wait for a processor.
    const auto median = stops.begin() + static_cast<std::ptrdiff_t>(stops.size() / 2);
    std::nth_element(stops.begin(), median, stops.end());
    EXPECT_LT(*median, 1ms);
    expectBackTo(threads, descriptors);
}

/// How often the stream's threads have gone to sleep so far.
long sleepsOfStreams()
{
    long sum = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream status(task.path() / "status");
        const std::string text { std::istreambuf_iterator(status), {} };
        constexpr std::string_view field = "\nvoluntary_ctxt_switches:";
        if (text.starts_with("Name:\tfile-events\n"))
            sum += std::stol(text.substr(text.find(field) + field.size()));
    }
    return sum;
}

TEST(StreamIdleness, NeverWakesUpWhileNothingHappens)
{
    StreamStage stage;
    std::filesystem::create_directory(stage.path("root"));
    stage.start({ "root" });
    stage.sync();
    // It may wake up once or twice more after the last delivery, but not again after that.
    for (int change = 0; change < 4; ++change) {
        const long before = sleepsOfStreams();
        const auto end = std::chrono::steady_clock::now() + 1s;
        while (sleepsOfStreams() == before && std::chrono::steady_clock::now() < end)
            std::this_thread::yield();
        if (sleepsOfStreams() == before)
            return;
    }
    ADD_FAILURE() << "the stream keeps waking up";
}

} // namespace
} // namespace stemvault::file_events

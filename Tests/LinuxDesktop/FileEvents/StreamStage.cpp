#include "LinuxDesktop/FileEvents/StreamStage.h"

#include "Platform/FileEvents.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sched.h>
#include <sys/inotify.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace stemvault::file_events {

namespace {

/// A stream may briefly outlive its test, so the calls that it uses are never destroyed.
FaultyInotifyCalls* newCalls()
{
    static auto& all = *new std::vector<std::unique_ptr<FaultyInotifyCalls>>;
    return all.emplace_back(std::make_unique<FaultyInotifyCalls>()).get();
}

/// In a user namespace, any user can be root, and so are the tools that are started there.
bool enterUserNamespace()
{
    const unsigned user = geteuid(), group = getegid();
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
        return false;
    std::ofstream("/proc/self/uid_map") << "0 " << user << " 1\n";
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/gid_map") << "0 " << group << " 1\n";
    return true;
}

bool enterMountNamespace()
{
    if (unshare(CLONE_NEWNS) != 0 && !enterUserNamespace())
        return false;
    return mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

const bool mayMount = enterMountNamespace();

} // namespace

bool canMount()
{
    return mayMount;
}

int FaultyInotifyCalls::addWatch(int descriptor, const char* path, std::uint32_t mask)
{
    struct stat status { };
    const bool isUnreadable = !unreadableName.empty()
        && std::string_view(path).ends_with(unreadableName) && stat(path, &status) == 0
        && (status.st_mode & 0777U) != 0700;
    if (isUnreadable)
        return -EACCES;
    if (watchesLeft-- <= 0)
        return -ENOSPC;
    const bool ignoresEvents = simulatesNetworkShare && !std::string_view(path).ends_with("/beat");
    return InotifyCalls::addWatch(
        descriptor, path, ignoresEvents ? IN_MASK_ADD | IN_DELETE_SELF : mask);
}

long FaultyInotifyCalls::read(int descriptor, void* buffer, std::size_t size)
{
    std::unique_lock lock(mutex);
    released.wait(lock, [this] { return !areReadsHeld; });
    const long result = InotifyCalls::read(descriptor, buffer, size);
    if (result <= 0 && afterEmptyRead)
        afterEmptyRead();
    return result;
}

std::uint32_t FaultyInotifyCalls::fileSystemType(const char* path)
{
    return simulatesNetworkShare ? 0x6969 : InotifyCalls::fileSystemType(path);
}

int FaultyInotifyCalls::wait(std::span<pollfd> awaited, const timespec* timeout)
{
    const int ready = InotifyCalls::wait(awaited, timeout);
    std::unique_lock lock(mutex);
    const auto begin = std::chrono::steady_clock::now();
    released.wait(lock, [this] { return !areWaitsHeld; });
    heldFor += std::chrono::steady_clock::now() - begin;
    return ready;
}

std::chrono::nanoseconds FaultyInotifyCalls::runDelay()
{
    const std::lock_guard lock(mutex);
    return InotifyCalls::runDelay() + heldFor;
}

void FaultyInotifyCalls::holdWaits(bool isHeld)
{
    const std::lock_guard lock(mutex);
    areWaitsHeld = isHeld;
    released.notify_all();
}

void FaultyInotifyCalls::holdReads(bool isHeld)
{
    const std::lock_guard lock(mutex);
    areReadsHeld = isHeld;
    released.notify_all();
}

struct StreamStage::Record {
    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    bool isReady = false;
    Reports reports;

    void add(const EventBatch& batch)
    {
        const std::lock_guard lock(mutex);
        for (std::size_t index = 0; index < batch.paths.size(); ++index)
            reports[batch.paths[index]] |= batch.flags[index];
        changed.notify_all();
    }

    [[nodiscard]] bool waitFor(const std::function<bool()>& isDone,
        std::chrono::milliseconds deadline = std::chrono::seconds(20)) const
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, deadline, isDone);
    }
};

StreamStage::StreamStage() : faults(newCalls()), record(std::make_shared<Record>())
{
    folder.makeFolder("beat");
}

void StreamStage::start(const std::vector<std::string>& roots, std::chrono::milliseconds latency)
{
    StreamOptions options;
    for (const std::string& root : roots)
        options.paths.push_back(root.starts_with('/') ? root : path(root));
    options.paths.push_back(path("beat"));
    options.latency = latency;
    options.pollInterval = latency * 2;
    stream = InotifyStream::create(
        options, [to = record](const EventBatch& batch) { to->add(batch); },
        [to = record] {
            const std::lock_guard lock(to->mutex);
            to->isReady = true;
            to->changed.notify_all();
        },
        *faults);
    ASSERT_TRUE(stream);
    ASSERT_TRUE(record->waitFor([this] { return record->isReady; }));
}

bool StreamStage::watchesAll() const
{
    const std::lock_guard lock(record->mutex);
    return record->isReady;
}

/// The kernel keeps events in order, so once an event is reported, all earlier ones have been read.
/// Repeated, because events that the stream is still processing are reported a window later.
void StreamStage::sync()
{
    for (int count = 0; count < 4; ++count)
        beat(S_IFDIR);
}

void StreamStage::beat(mode_t kind)
{
    const std::string beat = path("beat/" + std::to_string(++beats));
    if (kind == S_IFDIR)
        mkdir(beat.c_str(), 0700);
    else
        mknod(beat.c_str(), kind, 0);
    ASSERT_TRUE(record->waitFor([&] { return record->reports.contains(beat); }));
    std::filesystem::remove(beat);
}

StreamStage::Reports StreamStage::reports() const
{
    const std::lock_guard lock(record->mutex);
    return shortened();
}

void StreamStage::forgetReports()
{
    const std::lock_guard lock(record->mutex);
    record->reports.clear();
}

StreamStage::Reports StreamStage::shortened() const
{
    Reports result;
    for (const auto& [reported, flags] : record->reports) {
        const bool isBelow = reported.starts_with(folder.path() + "/");
        if (!reported.starts_with(path("beat/")))
            result[isBelow ? reported.substr(folder.path().size() + 1) : reported] = flags;
    }
    return result;
}

bool StreamStage::waitFor(
    const std::function<bool(const Reports&)>& isDone, std::chrono::milliseconds deadline) const
{
    return record->waitFor([&] { return isDone(shortened()); }, deadline);
}

StreamStage::Step sh(const std::string& script)
{
    return [script](StreamStage& stage) {
        const std::string command = "cd '" + stage.path("") + "' && set -e\n" + script;
        EXPECT_EQ(system(command.c_str()), 0) << script;
    };
}

/// Truncation to the same size raises an event too. The kernel merges consecutive equal events, so
/// this alternates between two files.
void flood(StreamStage& stage)
{
    const std::string files[] = { stage.path("beat/one"), stage.path("beat/two") };
    for (const std::string& file : files)
        std::ofstream(file) << "x";
    for (int events = 0; events < 17'000; ++events)
        std::filesystem::resize_file(files[events % 2], 0);
}

void age(const std::string& clock, std::chrono::milliseconds least)
{
    const FileTime enough = wallClock() + least;
    do
        std::ofstream(clock) << "tick";
    while (fileStatus(clock)->changed < enough);
}

void age(StreamStage& stage, std::chrono::milliseconds least)
{
    age(stage.path("clock"), least);
}

} // namespace stemvault::file_events

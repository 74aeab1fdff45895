// Measures the event stream, and other folder watchers if they are installed, and prints a row of a
// table for each: how long until all watches are in place and how much memory that takes, how much
// processor time a storm of new files takes and whether all are reported, how soon the first event
// arrives, how often a growing file is reported, and how often an idle watcher wakes up.

#include "StreamWatchers.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <thread>
#include <unistd.h>
#include <utility>

namespace {

using namespace std::chrono_literals;
using stemvault::FileDescriptor;
using stemvault::bench::Watcher;
using Clock = std::chrono::steady_clock;

constexpr int repetitions = 5;
constexpr int latencySamples = 20;

double milliseconds(Clock::duration duration)
{
    return std::chrono::duration<double, std::milli>(duration).count();
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

/// A temporary folder, in memory if possible, removed at the end.
class Scratch {
public:
    Scratch()
    {
        std::string pattern =
            (std::filesystem::is_directory("/dev/shm") ? std::filesystem::path("/dev/shm")
                                                       : std::filesystem::temp_directory_path())
            / "stemvault-bench-XXXXXX";
        folder = mkdtemp(pattern.data());
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch()
    {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    [[nodiscard]] std::string path(const std::string& name) const { return folder + "/" + name; }

private:
    std::string folder;
};

void write(const std::string& path)
{
    const FileDescriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
    if (::write(file.get(), "x", 1) != 1)
        std::abort();
}

/// Sessions of twenty folders, each with ten takes; four files in each folder.
void makeTree(const std::string& top, int folders)
{
    std::filesystem::create_directory(top);
    for (int made = 0; made < folders; ++made) {
        const std::string session = top + "/session-" + std::to_string(made / 220);
        const std::string part = session + "/folder " + std::to_string(made % 220 / 11);
        const std::string take =
            made % 11 == 0 ? part : part + "/take-" + std::to_string(made % 11);
        std::filesystem::create_directories(take);
        for (int file = 0; file < 4; ++file)
            write(take + "/" + std::to_string(file) + ".wav");
    }
}

/// The number that follows `word` on the line of a /proc file that begins with it; 0 without one.
long number(const std::string& path, const std::string& word)
{
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);)
        if (line.starts_with(word))
            return std::atol(line.c_str() + word.size());
    return 0;
}

std::string processPath(pid_t pid, const char* name)
{
    return "/proc/" + std::to_string(pid) + "/" + name;
}

double processorTime(pid_t pid)
{
    double nanoseconds = 0;
    for (const auto& task : std::filesystem::directory_iterator(processPath(pid, "task"))) {
        double running = 0;
        std::ifstream(task.path() / "schedstat") >> running;
        nanoseconds += running;
    }
    return nanoseconds / 1e6;
}

long wakeUps(pid_t pid)
{
    long sum = 0;
    for (const auto& task : std::filesystem::directory_iterator(processPath(pid, "task")))
        sum += number(task.path() / "status", "voluntary_ctxt_switches:");
    return sum;
}

/// Counts how often a watcher's output names each file `take-NNNNNN`.
class Tally {
public:
    void add(const std::string& text)
    {
        unread += text;
        std::size_t at = 0;
        while ((at = unread.find("take-", at)) != std::string::npos && at + 11 <= unread.size()) {
            ++counts[std::atoi(unread.substr(at + 5, 6).c_str())];
            at += 11;
        }
        unread.erase(0, unread.size() - std::min<std::size_t>(unread.size(), 10));
        if (const std::size_t begun = unread.find("take-"); begun == std::string::npos)
            unread.erase(0, unread.size() - std::min<std::size_t>(unread.size(), 4));
    }

    [[nodiscard]] std::size_t different() const { return counts.size(); }
    [[nodiscard]] int of(int file) const { return counts.contains(file) ? counts.at(file) : 0; }
    [[nodiscard]] long repeated() const
    {
        return std::count_if(
            counts.begin(), counts.end(), [](const auto& file) { return file.second > 1; });
    }

private:
    std::string unread;
    std::map<int, int> counts;
};

std::string take(int number)
{
    std::string digits = std::to_string(number);
    return "/take-" + std::string(6 - digits.size(), '0') + digits + ".wav";
}

/// Reads until the watcher has printed nothing for `quiet`.
void readUntilQuiet(Watcher& watcher, Tally& tally, std::chrono::milliseconds quiet)
{
    std::string text;
    while (watcher.reader().read(text, Clock::now() + quiet)) {
        tally.add(text);
        text.clear();
    }
}

bool startAndAwait(Watcher& watcher, const std::string& folder, const Scratch& scratch)
{
    return watcher.start(folder, scratch.path(""))
        && (watcher.tellsWhenReady() || watcher.awaitFirstReport(folder));
}

void measureStart(Watcher& watcher, const Scratch& scratch, const std::string& tree)
{
    std::vector<double> times;
    for (int repetition = 0; repetition < repetitions; ++repetition) {
        // The time that the kernel needs to drop the previous round's watches must not count.
        watcher.stop();
        const auto before = Clock::now();
        if (!watcher.start(tree, scratch.path("")))
            return (void)std::printf(" failed |");
        times.push_back(milliseconds(Clock::now() - before));
        if (!watcher.tellsWhenReady())
            return (void)std::printf(" not told |");
    }
    std::printf(" %.1f |", median(times));
}

void measureMemory(const Watcher& watcher)
{
    if (!watcher.tellsWhenReady())
        return (void)std::printf(" |");
    std::printf(" %.1f / %.1f |",
        static_cast<double>(number(processPath(watcher.pid(), "status"), "VmHWM:")) / 1024,
        static_cast<double>(number(processPath(watcher.pid(), "smaps_rollup"), "Pss:")) / 1024);
}

void writeStorm(const std::string& top)
{
    for (int file = 0; file < 20000; ++file)
        write(top + "/old-" + std::to_string(file % 200) + take(file));
    for (int file = 20000; file < 22000; ++file) {
        const std::string folder = top + "/new-" + std::to_string(file / 4);
        std::filesystem::create_directory(folder);
        write(folder + take(file));
    }
}

/// 20,000 files in 200 existing folders, and 2,000 in 500 folders that are created meanwhile.
void measureStorm(Watcher& watcher, const Scratch& scratch)
{
    const std::string top = scratch.path("storm");
    for (int folder = 0; folder < 200; ++folder)
        std::filesystem::create_directories(top + "/old-" + std::to_string(folder));
    if (!startAndAwait(watcher, top, scratch))
        return (void)std::printf(" failed | | |");
    const double before = processorTime(watcher.pid());
    std::thread writer(writeStorm, top);
    Tally tally;
    readUntilQuiet(watcher, tally, 3s);
    writer.join();
    readUntilQuiet(watcher, tally, 3s);
    std::printf(" %.0f | %zu | %ld |", processorTime(watcher.pid()) - before,
        22000 - tally.different(), tally.repeated());
    watcher.stop();
    std::filesystem::remove_all(top);
}

void measureLatency(Watcher& watcher, const std::string& folder)
{
    std::vector<double> times;
    for (int sample = 0; sample < latencySamples; ++sample) {
        Tally tally;
        readUntilQuiet(watcher, tally, 700ms);
        write(folder + take(sample));
        const auto before = Clock::now();
        std::string text;
        while (text.find("take-") == std::string::npos)
            if (!watcher.reader().read(text, before + 10s))
                return (void)std::printf(" failed |");
        times.push_back(milliseconds(Clock::now() - before));
    }
    std::printf(" %.2f |", median(times));
}

void measureAppends(Watcher& watcher, const std::string& folder)
{
    Tally tally;
    readUntilQuiet(watcher, tally, 1s);
    const auto begin = Clock::now();
    for (int append = 0; append < 500; ++append) {
        write(folder + take(999));
        std::string text;
        while (Clock::now() < begin + append * 2ms)
            if (watcher.reader().read(text, begin + append * 2ms))
                tally.add(std::exchange(text, {}));
    }
    readUntilQuiet(watcher, tally, 2s);
    std::printf(" %d |", tally.of(999));
}

void measureIdleness(const Watcher& watcher)
{
    const long before = wakeUps(watcher.pid());
    std::this_thread::sleep_for(10s);
    std::printf(" %ld |\n", wakeUps(watcher.pid()) - before);
}

void measure(const std::string& program, const Scratch& scratch)
{
    Watcher watcher(program);
    std::printf("| %s |", std::filesystem::path(program).filename().c_str());
    for (const char* tree : { "1000", "10000", "50000" })
        measureStart(watcher, scratch, scratch.path(tree));
    measureMemory(watcher);
    measureStorm(watcher, scratch);
    const std::string folder = scratch.path("1000/session-0");
    if (!startAndAwait(watcher, scratch.path("1000"), scratch))
        return (void)std::printf(" failed |\n");
    measureLatency(watcher, folder);
    measureAppends(watcher, folder);
    measureIdleness(watcher);
    std::fflush(stdout);
}

} // namespace

int main(int, char** arguments)
{
    const Scratch scratch;
    for (const int folders : { 1000, 10000, 50000 })
        makeTree(scratch.path(std::to_string(folders)), folders);
    std::printf("| Watcher | ready, 1,000 folders (ms) | 10,000 | 50,000 "
                "| peak memory / share at 50,000 (MiB) | storm, processor (ms) | lost | repeated "
                "| first event (ms) | reports of 500 appends | wake-ups in 10 s |\n"
                "|---|---|---|---|---|---|---|---|---|---|---|\n");
    const auto own = std::filesystem::path(arguments[0]).parent_path() / "stemvault-eventdump";
    for (const std::string& program : Watcher::available(own))
        measure(program, scratch);
    return 0;
}

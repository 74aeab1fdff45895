// stemvault-copy-bench [--mib N] [--rounds N] [FOLDER [OTHER_FOLDER]]
//
// Times our copy of one large file against cp, each in a separate process, alternately in the same
// run, and prints the medians as rows of Markdown. FOLDER is on a disk (by default the working
// folder), OTHER_FOLDER on another file system (by default /dev/shm).

#include "Foundation/FileDescriptor.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <iostream>
#include <random>
#include <spawn.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace stemvault;

namespace {

using Seconds = std::chrono::duration<double>;

struct Settings {
    int mebibytes = 1024;
    int rounds = 7;
    std::vector<std::string> folders;
};

[[noreturn]] void fail(const std::string& what)
{
    std::cerr << "stemvault-copy-bench: " << what << '\n';
    std::_Exit(1);
}

/// A new folder inside a given one, removed at the end.
class WorkFolder {
public:
    explicit WorkFolder(const std::string& parent) : path(parent + "/stemvault-bench-XXXXXX")
    {
        if (::mkdtemp(path.data()) == nullptr)
            fail("cannot make a folder in " + parent);
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;
    ~WorkFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }

    [[nodiscard]] std::string file(const std::string& name) const { return path + "/" + name; }

private:
    std::string path;
};

void run(std::vector<std::string> command)
{
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (std::string& argument : command)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    pid_t child = 0;
    int status = 0;
    if (::posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0
        || ::waitpid(child, &status, 0) != child || status != 0)
        fail(command[0] + " failed");
}

void synchronize(const std::string& path)
{
    const FileDescriptor item(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!item || ::fsync(item.get()) != 0)
        fail("cannot force " + path + " onto the disk");
}

std::string ownTool()
{
    return std::filesystem::read_symlink("/proc/self/exe").replace_filename("stemvault-copy");
}

void writeSource(const std::string& path, int mebibytes)
{
    std::minstd_rand random;
    std::vector<unsigned> block((1 << 20) / sizeof(unsigned));
    std::ranges::generate(block, std::ref(random));
    const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    const auto size = static_cast<ssize_t>(block.size() * sizeof(unsigned));
    for (int i = 0; i < mebibytes; ++i)
        if (::write(file.get(), block.data(), static_cast<std::size_t>(size)) != size)
            fail("cannot write " + path);
}

// The sync keeps writes that the previous copy left to the kernel out of this measurement.
double timed(const std::string& target, const std::function<void()>& copy)
{
    ::unlink(target.c_str());
    ::sync();
    const auto start = std::chrono::steady_clock::now();
    copy();
    return Seconds(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values)
{
    std::ranges::sort(values);
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

enum class Ending { InMemory, OnDisk };

void compare(const std::string& what, const WorkFolder& from, const WorkFolder& to, Ending ending,
    const Settings& settings)
{
    const std::string source = from.file("source.wav");
    const std::string target = to.file("copy.wav");
    const std::function<void()> others = [&] {
        run({ "cp", source, target });
        if (ending == Ending::InMemory)
            return;
        synchronize(target);
        synchronize(to.file("."));
    };
    const std::function<void()> ours = [&] {
        run(ending == Ending::OnDisk
                ? std::vector<std::string> { ownTool(), source, target }
                : std::vector<std::string> { ownTool(), "--no-sync", source, target });
    };
    std::vector<double> cpTimes;
    std::vector<double> ourTimes;
    for (int round = 0; round < settings.rounds; ++round) {
        const bool isOursFirst = round % 2 == 1;
        for (const bool isOurs : { isOursFirst, !isOursFirst })
            (isOurs ? ourTimes : cpTimes).push_back(timed(target, isOurs ? ours : others));
    }
    ::unlink(target.c_str());
    std::printf("| %s | %.3f s | %.3f s | %.2f |\n", what.c_str(), median(cpTimes),
        median(ourTimes), median(ourTimes) / median(cpTimes));
    std::fflush(stdout);
}

bool areApart(const std::string& one, const std::string& other)
{
    struct stat first { };
    struct stat second { };
    return ::stat(one.c_str(), &first) == 0 && ::stat(other.c_str(), &second) == 0
        && first.st_dev != second.st_dev;
}

Settings settingsFrom(const std::vector<std::string>& arguments)
{
    Settings settings;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == "--mib" && i + 1 < arguments.size())
            settings.mebibytes = std::atoi(arguments[++i].c_str());
        else if (arguments[i] == "--rounds" && i + 1 < arguments.size())
            settings.rounds = std::atoi(arguments[++i].c_str());
        else
            settings.folders.push_back(arguments[i]);
    }
    if (settings.mebibytes < 1 || settings.rounds < 1 || settings.folders.size() > 2)
        fail("usage: stemvault-copy-bench [--mib N] [--rounds N] [FOLDER [OTHER_FOLDER]]");
    const char* const usual[] = { ".", "/dev/shm" };
    while (settings.folders.size() < 2)
        settings.folders.emplace_back(usual[settings.folders.size()]);
    return settings;
}

} // namespace

int main(int count, char** values)
{
    const Settings settings = settingsFrom({ values + 1, values + count });
    std::printf("| copy of %d MiB | cp | ours | ours / cp |\n| --- | ---: | ---: | ---: |\n",
        settings.mebibytes);
    const WorkFolder disk(settings.folders[0]);
    writeSource(disk.file("source.wav"), settings.mebibytes);
    compare("same file system", disk, disk, Ending::InMemory, settings);
    compare("same file system, until it is on disk", disk, disk, Ending::OnDisk, settings);
    if (!areApart(settings.folders[0], settings.folders[1]))
        return 0;
    const WorkFolder other(settings.folders[1]);
    compare("disk to memory", disk, other, Ending::InMemory, settings);
    compare("disk to memory, fsync on both", disk, other, Ending::OnDisk, settings);
    std::filesystem::rename(disk.file("source.wav"), disk.file("moved.wav"));
    run({ "cp", disk.file("moved.wav"), other.file("source.wav") });
    std::filesystem::remove(disk.file("moved.wav"));
    compare("memory to disk", other, disk, Ending::InMemory, settings);
    compare("memory to disk, until it is on disk", other, disk, Ending::OnDisk, settings);
    return 0;
}

#include "StreamWatchers.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace stemvault::bench {

namespace {

using namespace std::chrono_literals;

struct Pipe {
    FileDescriptor reading;
    FileDescriptor writing;
};

Pipe makePipe()
{
    std::array<int, 2> ends {};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        std::abort();
    return { FileDescriptor(ends[0]), FileDescriptor(ends[1]) };
}

bool isInPath(const std::string& program)
{
    return std::system(("command -v " + program + " > /dev/null 2>&1").c_str()) == 0;
}

} // namespace

Child::Child(const std::vector<std::string>& command, const std::string& text)
{
    Pipe in = makePipe();
    Pipe out = makePipe();
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    process = fork();
    if (process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(in.reading.get(), STDIN_FILENO);
        dup2(out.writing.get(), STDOUT_FILENO);
        dup2(out.writing.get(), STDERR_FILENO);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    input = std::move(in.writing);
    output = std::move(out.reading);
    if (!text.empty() && write(input.get(), text.data(), text.size()) < 0)
        std::abort();
}

Child::~Child()
{
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
}

bool Child::read(std::string& text, std::chrono::steady_clock::time_point until)
{
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
    pollfd awaiting { output.get(), POLLIN, 0 };
    if (left <= 0ms || poll(&awaiting, 1, static_cast<int>(left.count())) <= 0)
        return false;
    std::array<char, 65536> buffer {};
    const ssize_t size = ::read(output.get(), buffer.data(), buffer.size());
    text.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    return size > 0;
}

bool Child::awaitWord(const std::string& word)
{
    std::string text;
    const auto until = std::chrono::steady_clock::now() + 60s;
    while (text.find(word) == std::string::npos)
        if (!read(text, until))
            return false;
    return true;
}

std::vector<std::string> Watcher::available(const std::string& ownProgram)
{
    std::vector<std::string> programs { ownProgram };
    for (const char* program : { "inotifywait", "watchman", "fswatch" })
        if (isInPath(program))
            programs.emplace_back(program);
    return programs;
}

bool Watcher::start(const std::string& folder, const std::string& scratch)
{
    stop();
    if (program == "watchman")
        return startDaemon(folder, scratch);
    if (program == "fswatch") {
        server = std::make_unique<Child>(
            std::vector<std::string> { program, "-r", "-l", "0.5", folder });
        return true;
    }
    isToldWhenReady = true;
    server = std::make_unique<Child>(program == "inotifywait"
            ? std::vector<std::string> { program, "-m", "-r", "--format", "%w%f", folder }
            : std::vector<std::string> { program, folder });
    return server->awaitWord("Watches established.");
}

void Watcher::stop()
{
    client.reset();
    server.reset();
}

bool Watcher::startDaemon(const std::string& folder, const std::string& scratch)
{
    const std::string socket = scratch + "/socket";
    std::filesystem::remove(socket);
    server = std::make_unique<Child>(std::vector<std::string> { program, "--foreground",
        "--no-save-state", "--sockname=" + socket, "--logfile=" + scratch + "/log",
        "--pidfile=" + scratch + "/pid", "--statefile=" + scratch + "/state" });
    const auto until = std::chrono::steady_clock::now() + 10s;
    while (!std::filesystem::exists(socket) && std::chrono::steady_clock::now() < until)
        usleep(1000);
    isToldWhenReady = true;
    const auto ask = [&](const std::string& command, const char* answer) {
        client =
            std::make_unique<Child>(std::vector<std::string> { program, "--no-spawn", "--no-pretty",
                                        "--persistent", "--json-command", "--sockname=" + socket },
                command + "\n");
        return client->awaitWord(answer);
    };
    // The answer to a query arrives when watchman has scanned the folder.
    return ask(R"(["watch",")" + folder + "\"]", "\"watch\"")
        && ask(R"(["query",")" + folder + R"(",{"expression":["name","none"]}])", "\"files\"")
        && ask(R"(["subscribe",")" + folder
                + R"(","bench",{"fields":["name"],"expression":["match","take-*.wav"]}])",
            "\"subscribe\"");
}

bool Watcher::awaitFirstReport(const std::string& folder)
{
    std::string text;
    for (int attempt = 0; attempt < 20; ++attempt) {
        std::ofstream(folder + "/probe-" + std::to_string(attempt)) << "x";
        const auto until = std::chrono::steady_clock::now() + 1s;
        while (reader().read(text, until))
            if (text.find("probe-") != std::string::npos)
                return true;
    }
    return false;
}

} // namespace stemvault::bench

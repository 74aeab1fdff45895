#pragma once

#include "Foundation/FileDescriptor.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace stemvault::bench {

/// A child process whose standard output and error are read here. It is killed with the object.
class Child {
public:
    /// `input` is written to its standard input, which then stays open.
    explicit Child(const std::vector<std::string>& command, const std::string& input = {});
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child();

    [[nodiscard]] pid_t pid() const { return process; }

    /// Waits for output until `until` and appends it to `text`; false when the output has ended or
    /// the time is up.
    bool read(std::string& text, std::chrono::steady_clock::time_point until);

    /// Reads until `word` has been printed; false if that takes longer than a minute.
    [[nodiscard]] bool awaitWord(const std::string& word);

private:
    pid_t process = -1;
    FileDescriptor input;
    FileDescriptor output;
};

/// A program that watches a folder with everything below it.
class Watcher {
public:
    explicit Watcher(std::string programName) : program(std::move(programName)) { }

    /// The commands of the watchers that are installed; the first is our own.
    [[nodiscard]] static std::vector<std::string> available(const std::string& ownProgram);

    /// Starts watching. If the program reports when all watches are in place, waits for that.
    bool start(const std::string& folder, const std::string& scratch);
    [[nodiscard]] bool tellsWhenReady() const { return isToldWhenReady; }

    /// Creates files until one is reported, for a program that does not report when it is ready.
    bool awaitFirstReport(const std::string& folder);

    /// Ends it, so that it can be started again.
    void stop();

    /// The process that does the work.
    [[nodiscard]] pid_t pid() const { return server->pid(); }

    /// The one that prints what happened.
    [[nodiscard]] Child& reader() { return client ? *client : *server; }

private:
    bool startDaemon(const std::string& folder, const std::string& scratch);

    std::string program;
    bool isToldWhenReady = false;
    std::unique_ptr<Child> server;
    std::unique_ptr<Child> client;
};

} // namespace stemvault::bench

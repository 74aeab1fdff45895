#pragma once

#include "Foundation/FileDescriptor.h"

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace stemvault::application {

/// Turns the signals that ask a program to end (SIGTERM, SIGINT, SIGHUP) into a call from the event
/// loop. A signal that was ignored when the program started stays ignored. Only one object of this
/// class may exist at a time.
class TerminationSignals {
public:
    explicit TerminationSignals(std::function<void()> terminate);
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;
    ~TerminationSignals();

private:
    FileDescriptor counter;
    std::unique_ptr<QSocketNotifier> notifier;
};

} // namespace stemvault::application

#include "LinuxDesktop/Application/TerminationSignals.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace stemvault::application {

namespace {

constexpr std::array handled { SIGTERM, SIGINT, SIGHUP };

volatile std::sig_atomic_t counterDescriptor = -1;

// Only async-signal-safe calls such as write are allowed here. The interrupted code's errno must
// not change.
void countSignal(int /*number*/)
{
    const int kept = errno;
    const std::uint64_t one = 1;
    static_cast<void>(!::write(counterDescriptor, &one, sizeof one));
    errno = kept;
}

void setHandler(int number, void (*handler)(int))
{
    struct sigaction action { };
    if (::sigaction(number, nullptr, &action) != 0 || action.sa_handler == SIG_IGN)
        return;
    action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    ::sigaction(number, &action, nullptr);
}

} // namespace

TerminationSignals::TerminationSignals(std::function<void()> terminate)
    : counter(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      notifier(std::make_unique<QSocketNotifier>(counter.get(), QSocketNotifier::Read))
{
    counterDescriptor = counter.get();
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(),
        [this, terminate = std::move(terminate)] {
            std::uint64_t count = 0;
            static_cast<void>(!::read(counter.get(), &count, sizeof count));
            terminate();
        });
    for (const int number : handled)
        setHandler(number, &countSignal);
}

TerminationSignals::~TerminationSignals()
{
    for (const int number : handled)
        setHandler(number, SIG_DFL);
}

} // namespace stemvault::application

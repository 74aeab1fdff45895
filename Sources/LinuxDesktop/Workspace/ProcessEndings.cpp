#include "LinuxDesktop/Workspace/ProcessEndings.h"

#include "LinuxDesktop/Workspace/ProcessDescriptor.h"
#include "LinuxDesktop/Workspace/ReadFile.h"

#include <QObject>

#include <utility>

namespace stemvault::workspace {

ProcessEndings::ProcessEndings(std::string processRoot, std::function<void()> onEnding)
    : root(std::move(processRoot)), ended(std::move(onEnding))
{
}

void ProcessEndings::watch(const std::set<ProcessKey>& keys)
{
    std::erase_if(watches, [&](const auto& each) { return !keys.contains(each.first); });
    for (const ProcessKey& key : keys)
        if (const auto [at, isNew] = watches.try_emplace(key); isNew)
            at->second = makeWatch(key);
}

ProcessEndings::Watch ProcessEndings::makeWatch(const ProcessKey& key)
{
    Watch made { openProcess(key.process), nullptr };
    // The process may have ended, and its number been reused, before the descriptor was open.
    if (!isStillThere(key)) {
        callLater();
        return {};
    }
    if (!made.process)
        return made;
    made.notifier = std::make_unique<QSocketNotifier>(made.process.get(), QSocketNotifier::Read);
    QObject::connect(made.notifier.get(), &QSocketNotifier::activated, &context,
        [this, notifier = made.notifier.get()] {
            notifier->setEnabled(false); // The descriptor stays readable.
            callLater();
        });
    return made;
}

// Not at once, because `watch` may destroy the notifier whose signal is in progress.
void ProcessEndings::callLater()
{
    QMetaObject::invokeMethod(&context, ended, Qt::QueuedConnection);
}

bool ProcessEndings::isStillThere(const ProcessKey& key) const
{
    const auto text = readFile(root + "/" + std::to_string(key.process) + "/stat");
    const auto stat = text ? parseProcessStat(*text) : std::nullopt;
    return stat && stat->startTime == key.startTime;
}

} // namespace stemvault::workspace

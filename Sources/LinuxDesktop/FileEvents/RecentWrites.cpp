#include "LinuxDesktop/FileEvents/RecentWrites.h"

#include <algorithm>
#include <functional>

namespace stemvault::file_events {

namespace {

constexpr std::size_t maxUnclosed = 256;
constexpr std::size_t maxAccounts = 1024;

} // namespace

RecentWrites::File RecentWrites::file(NodeRef folder, std::string_view name)
{
    // The multiplier is that of `spread`; it keeps equal names in neighbouring folders apart.
    const std::uint64_t place = (std::uint64_t { folder.age } << 32U) | folder.id;
    return std::hash<std::string_view> {}(name) ^ (place * 0x9E3779B97F4A7C15U);
}

void RecentWrites::noteWrite(File file)
{
    if (std::ranges::find(unclosed, file) != unclosed.end())
        return;
    // truncate(2) raises a write event without a close, so some entries are never taken.
    if (unclosed.size() == maxUnclosed)
        unclosed.erase(unclosed.begin());
    unclosed.push_back(file);
}

bool RecentWrites::takeWrite(File file)
{
    const auto found = std::ranges::find(unclosed.rbegin(), unclosed.rend(), file);
    if (found == unclosed.rend())
        return false;
    unclosed.erase(std::next(found).base());
    return true;
}

void RecentWrites::account(File file, FileTime until)
{
    if (accounts.size() < maxAccounts)
        accounts.push_back({ file, until });
    else
        accounts[next] = { file, until };
    next = (next + 1) % maxAccounts;
}

FileTime RecentWrites::accountedUntil(File file) const
{
    FileTime until = FileTime::min();
    for (const Account& account : accounts)
        if (account.file == file)
            until = std::max(until, account.until);
    return until;
}

void RecentWrites::clear()
{
    unclosed.clear();
}

} // namespace stemvault::file_events

#include "StemvaultConnect/SourceRest.h"

#include "StemvaultConnect/BounceWatcher.h"

namespace stemvault {

bool isAtRest(const FileManager::SourceState& source, WallTime now)
{
    const auto age = now - source.contentModificationDate;
    if (source.writers == Writers::Some)
        return source.size > BounceWatcher::largestHeader
            && age >= BounceWatcher::stableForWhileOpen;
    // A date in the future is another computer's, whose clock differs; it tells nothing.
    return age >= BounceWatcher::stableFor || age <= -BounceWatcher::stableFor;
}

} // namespace stemvault

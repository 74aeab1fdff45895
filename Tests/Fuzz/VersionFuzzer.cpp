#include "Fuzz/Fuzzer.h"
#include "StemvaultConnect/UpdateFeed.h"

#include <sstream>
#include <string>

// Compares versions: even malformed ones must have a consistent order.
namespace stemvault {

void feed(std::string_view input)
{
    std::istringstream lines { std::string(input) };
    std::string a, b, c;
    std::getline(std::getline(std::getline(lines, a), b), c);
    require(!isNewer(a, b) || !isNewer(b, a), "of two versions at most one is newer");
    require(isNewer(a, b) || isNewer(b, c) || !isNewer(a, c), "the newest is newer than one");
    require(!isNewer(a, b) || !isNewer(b, c) || isNewer(a, c), "newer than a newer one is newer");
    require(
        !isNewer(a, a + "..0.x") && !isNewer(a + "..0.x", a), "noughts at the end do not count");
    require(isNewer(a + ".1", a), "every version has a newer one");
}

} // namespace stemvault

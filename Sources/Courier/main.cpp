#include "Courier/Bus.h"
#include "Courier/CourierText.h"
#include "Courier/Selection.h"
#include "Foundation/FileURI.h"
#include "Foundation/UnicodeText.h"

#include <iostream>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Sends a file manager's selection to Stemvault Connect and shows its answer to the user.
//
//   courier add FILES...         Add to Stemvault
//   courier playlist FILES...    Create Stemvault Playlist
//   courier add-selection        Add to Stemvault, for a hotkey: the selected files
//
// Exits with 0 if the service was performed, 1 if the user was shown why not, 2 on wrong usage.

namespace stemvault {
namespace {

struct Service {
    std::string_view word;
    const char* message;
    const char* title;
    bool takesSelection; ///< The selection replaces the arguments.
};

constexpr Service services[] = {
    { "add", "addToStemvault", "Add to Stemvault", false },
    { "playlist", "createStemvaultPlaylist", "Create Stemvault Playlist", false },
    { "add-selection", "addToStemvault", "Add to Stemvault", true },
};

const Service* serviceFor(std::string_view word)
{
    for (const Service& service : services)
        if (service.word == word)
            return &service;
    return nullptr;
}

Result<std::vector<std::string>> urisOf(const Service& service, std::span<char*> files)
{
    if (service.takesSelection)
        return selectedFiles();
    std::vector<std::string> uris;
    for (const char* file : files)
        uris.push_back(fileURI(absolutePath(file)));
    return uris;
}

/// The error text to show to the user; empty on success.
std::string deliver(
    const Result<Bus>& bus, const Service& service, const Result<std::vector<std::string>>& uris)
{
    if (!bus)
        return bus.error();
    if (!uris)
        return uris.error();
    const auto answer = bus.value().perform(service.message, uris.value());
    return answer ? answer.value() : answer.error();
}

int run(std::span<char*> arguments)
{
    const Service* service = arguments.size() > 1 ? serviceFor(arguments[1]) : nullptr;
    if (service == nullptr || (service->takesSelection && arguments.size() > 2)) {
        std::cerr << "usage: courier add|playlist FILES...\n"
                     "       courier add-selection\n";
        return 2;
    }
    // Before the bus is opened, because this may leave a process behind, which must not inherit it.
    const auto uris = urisOf(*service, arguments.subspan(2));
    const auto bus = Bus::open();
    // Any program that owns the name on the bus may send any bytes as its answer.
    const std::string error = printable(deliver(bus, *service, uris));
    if (error.empty())
        return 0;
    std::cerr << error << '\n';
    if (bus)
        bus.value().notify(service->title, error);
    return 1;
}

} // namespace
} // namespace stemvault

int main(int argc, char* argv[])
{
    return stemvault::run({ argv, static_cast<std::size_t>(argc) });
}

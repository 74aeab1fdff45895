#include "Foundation/PathText.h"
#include "Fuzz/Fuzzer.h"
#include "LinuxDesktop/LoginItem/AutostartEntry.h"
#include "LinuxDesktop/Workspace/DesktopEntry.h"
#include "Support/TemporaryFolder.h"

// Parses desktop entries, which any package or user may have written, and writes our own.
namespace stemvault {

void feed(std::string_view input)
{
    const std::string text(input);
    const auto languages = workspace::preferredLanguages(input.substr(0, input.find('\n')));
    const auto entry = workspace::parseDesktopEntry(text, languages);
    require(entry
            == workspace::parseDesktopEntry(
                text + "\n[Desktop Action x]\nHidden=true\n", languages),
        "another group changes nothing");
    require(!entry || entry->isHidden || !entry->name.empty(), "an application has a name");
    require(!entry || entry->program == lastPathComponent(entry->program), "a program is a name");
    const auto identifier = workspace::parseFlatpakIdentifier(text);
    require(!identifier || identifier->size() < text.size(), "an identifier is in the text");

    const TemporaryFolder folder;
    const std::string file = "net.stemvault.Connect.desktop";
    const std::string executable = "/" + text.substr(0, text.find('\0'));
    login_item::AutostartEntry autostart(folder.path(), executable);
    folder.write(file, text);
    require(!entry || !entry->isHidden || autostart.status() == LoginItemStatus::NotRegistered,
        "what the user has deleted does not start");
    require(autostart.registerItem() && autostart.status() == LoginItemStatus::Enabled,
        "an entry that was written is in force");
    const auto ours = workspace::parseDesktopEntry(folder.read(file), {});
    require(ours && ours->requiredProgram == executable, "any program can be started at login");
}

} // namespace stemvault

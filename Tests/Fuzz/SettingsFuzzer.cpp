#include "Foundation/UnicodeText.h"
#include "Fuzz/Fuzzer.h"
#include "StemvaultConnect/SettingsStore.h"
#include "Support/FakePlatform.h"

#include <tuple>

// Loads the settings record, which other programs may have changed in any way.
namespace stemvault {

namespace {

/// Loads the settings from a record, adds folders, and returns the settings and the record saved.
auto loaded(const std::string& record, const std::vector<StemvaultFolder>& added = {})
{
    FakePlatform desktop;
    const std::string key = "settingsStore_v1";
    desktop.userDefaults.values[key] = record;
    SettingsStore& settings = SettingsStore::shared();
    for (const StemvaultFolder& folder : added) {
        settings.addFolder(folder);
        settings.setProjectsRootPath(folder.path);
    }
    return std::tuple(settings.stemvaultFolders(), settings.alwaysWatchPath(),
        settings.projectsRootPath(), desktop.userDefaults.values[key]);
}

} // namespace

void feed(std::string_view input)
{
    const std::string text(input);
    const auto settings = loaded(text);
    require(loaded(std::get<3>(settings)) == settings, "what is written back reads the same");
    if (!isValidUTF8(text))
        return;
    const auto changed = loaded(text, { { UUID(), text, text } });
    require(loaded(std::get<3>(changed)) == changed, "a folder of any name is kept");
}

} // namespace stemvault

#include "LinuxDesktop/Workspace/ApplicationList.h"
#include "LinuxDesktop/Workspace/FakeProcesses.h"

#include <gmock/gmock.h>

#include <ctime>
#include <filesystem>
#include <unistd.h>

namespace stemvault::workspace {
namespace {

using namespace std::literals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

std::vector<std::string> listed(ProcessTable& table, const DesktopEntries& entries = {},
    const std::map<ProcessKey, WindowClass>& windows = {})
{
    table.sweep();
    std::vector<std::string> lines;
    for (const auto& [key, application] : listApplications(table.processes(), windows, entries))
        lines.push_back(std::to_string(application.processIdentifier) + " "
            + application.bundleIdentifier.value_or("-") + " "
            + application.localizedName.value_or("-")
            + (application.activationPolicy == ActivationPolicy::Regular ? "" : " (background)"));
    return lines;
}

TEST(ApplicationListTests, DAWsInTheOrderOfTheirStart)
{
    const FakeProcesses processes;
    processes.start(30, { "/opt/reaper\0"s, "reaper", 1, 500 });
    processes.start(31, { "/opt/reaper\0"s, "reaper", 33, 530 }); // Started by its own helper.
    processes.start(33, { "/opt/reaper_host64\0"s, "reaper_host64", 30, 510 });
    processes.start(40, { "C:\\ProTools.exe\0\0\0"s, "ProTools.exe", 1, 400 });
    processes.start(41, { "/usr/bin/wineserver\0"s, "wineserver", 1, 390 });
    processes.start(50, { "", "reaper", 1, 300, "x", 'Z' });
    ProcessTable table(processes.root());
    EXPECT_THAT(listed(table),
        ElementsAre("40 com.avid.ProTools Pro Tools", "30 com.cockos.reaper REAPER",
            "31 com.cockos.reaper REAPER (background)"));

    processes.end(40);
    processes.start(30, { "sleep\0"s, "sleep", 1, 900 }); // The process ID is reused.
    processes.start(33, { "/opt/reaper\0"s, "reaper", 1, 510 }); // Executed another program.
    EXPECT_THAT(listed(table),
        ElementsAre("33 com.cockos.reaper REAPER", "31 com.cockos.reaper REAPER (background)"));

    // A script with the DAW's name, which executes the DAW long after its start.
    processes.start(60, { "/bin/sh\0/usr/bin/reaper\0"s, "reaper", 1, 600 });
    EXPECT_THAT(listed(table), Not(Contains("60 com.cockos.reaper REAPER")));
    processes.start(60, { "/opt/reaper\0"s, "reaper", 1, 600, "x", 'S', "", 2 });
    EXPECT_THAT(listed(table), Contains("60 com.cockos.reaper REAPER"));

    ProcessTable ofAnother(processes.root(), ::geteuid() + 1);
    EXPECT_THAT(listed(ofAnother), IsEmpty());
    ProcessTable ofNothing(processes.root() + "/none");
    EXPECT_THAT(listed(ofNothing), IsEmpty());
    ProcessTable ofAnotherUser(processes.root(), ::geteuid() + 1);
    EXPECT_THAT(listed(ofAnotherUser), IsEmpty());
    EXPECT_THAT(listed(ofAnotherUser), IsEmpty()) << "as it remembers";
}

TEST(ApplicationListTests, AProcessIsReadAgainSoonAfterItsStart)
{
    timespec sinceStart {};
    ::clock_gettime(CLOCK_BOOTTIME, &sinceStart);
    const std::int64_t now = sinceStart.tv_sec * ::sysconf(_SC_CLK_TCK);
    const FakeProcesses processes;
    ProcessTable table(processes.root());
    // Wine and the desktop give a process its name and its unit later.
    const auto change = [&](int process, std::int64_t startTime) {
        processes.start(process, { "x\0"s, "x", 1, startTime });
        table.sweep();
        processes.start(process, { "C:\\ProTools.exe\0"s, "x", 1, startTime });
    };
    change(10, now);
    EXPECT_THAT(listed(table), ElementsAre("10 com.avid.ProTools Pro Tools"));
    change(20, 100);
    EXPECT_THAT(listed(table), ElementsAre("10 com.avid.ProTools Pro Tools"));
}

TEST(ApplicationListTests, ADAWWhoseStarterEndsBelongsToTheOneThatAdoptsIt)
{
    const FakeProcesses processes;
    processes.start(10, { "/opt/reaper\0"s, "reaper", 1, 10 });
    processes.start(11, { "/bin/sh\0"s, "sh", 10, 11 });
    processes.start(12, { "/opt/reaper\0"s, "reaper", 11, 12 });
    ProcessTable table(processes.root());
    const auto both =
        ElementsAre("10 com.cockos.reaper REAPER", "12 com.cockos.reaper REAPER (background)");
    EXPECT_THAT(listed(table), both);
    processes.end(11);
    processes.start(12, { "/opt/reaper\0"s, "reaper", 10, 12 });
    EXPECT_THAT(listed(table), both);
}

TEST(ApplicationListTests, ASandboxNamesItsApplicationWithoutAUnit)
{
    const TemporaryFolder folder;
    folder.write("applications/org.x.Y.desktop", "[Desktop Entry]\nType=Application\nName=Why");
    const auto menu = DesktopEntries::read({ { folder.path("applications") }, {}, {} });
    const FakeProcesses processes;
    const auto start = [&](int process, int parent, const std::string& name) {
        processes.start(process,
            { "/app/run\0"s, "run", parent, process, "session-2.scope", 'S', "", 1,
                "[Application]\nname=" + name + "\n" });
    };
    processes.start(9, { "bwrap\0"s, "bwrap", 1, 9 });
    start(10, 9, "fm.reaper.Reaper");
    start(11, 9, "org.x.Y");
    start(12, 9, "org.x.Z");
    start(13, 1, "fm.reaper.Reaper"); // Not in a sandbox, whatever lies there.
    ProcessTable table(processes.root());
    const WindowClass window { "run", "Run" };
    EXPECT_THAT(listed(table, *menu, { { { 11, 11 }, window }, { { 12, 12 }, window } }),
        ElementsAre("10 com.cockos.reaper REAPER", "11 org.x.Y Why", "12 org.x.Z run"));
}

TEST(ApplicationListTests, ADAWBelowSteamsLauncher)
{
    const FakeProcesses processes;
    processes.start(10, { "/s/steam\0"s, "steam", 1, 10 });
    processes.start(
        11, { "/s/reaper\0SteamLaunch\0AppId=7\0--\0/opt/reaper\0"s, "reaper", 10, 11 });
    processes.start(12, { "/s/pv-adverb\0--\0/opt/reaper\0"s, "pv-adverb", 11, 12 });
    processes.start(13, { "/opt/reaper\0"s, "reaper", 12, 13 });
    processes.start(14, { "/opt/reaper\0"s, "reaper", 13, 14 });
    processes.start(21, { "/s/reaper\0SteamLaunch\0AppId=8\0--\0/g\0"s, "reaper", 10, 21 });
    processes.start(22, { "/g\0"s, "game", 21, 22 });
    ProcessTable table(processes.root());
    EXPECT_THAT(listed(table, {}, { { { 21, 21 }, { "reaper", "reaper" } } }),
        ElementsAre("13 com.cockos.reaper REAPER", "14 com.cockos.reaper REAPER (background)"));
}

TEST(ApplicationListTests, ADAWUnderWineHasTheServerOfItsPrefix)
{
    const FakeProcesses processes;
    const auto start = [&](int process, const std::string& commandLine, const char* environment) {
        processes.start(process, { commandLine + '\0', "x", 1, process, "", 'S', environment });
    };
    start(10, "/usr/lib/wine/wineserver64", "HOME=/h");
    start(11, "/usr/bin/wineserver", "WINEPREFIX=/h/daws/");
    start(20, "C:\\Cubase12.exe", "HOME=/h");
    start(21, "C:\\Ableton Live 12 Suite.exe", "WINEPREFIX=/h/daws");
    start(22, "C:\\reaper.exe", "WINEPREFIX=/h/.wine/");
    start(23, "C:\\Nuendo13.exe", "WINEPREFIX=/h/other");
    start(24, "/opt/REAPER/reaper", "HOME=/h");
    ProcessTable table(processes.root());
    table.sweep();
    std::vector<std::pair<int, int>> servers;
    for (const auto& [key, application] : listApplications(table.processes(), {}, {}))
        servers.emplace_back(application.processIdentifier, application.fileServerIdentifier);
    EXPECT_THAT(
        servers, ElementsAre(Pair(20, 10), Pair(21, 11), Pair(22, 10), Pair(23, 0), Pair(24, 0)));
}

TEST(ApplicationListTests, ADAWUnderAnotherNameByItsDesktopEntry)
{
    const TemporaryFolder folder;
    folder.write("applications/cockos-reaper.desktop",
        "[Desktop Entry]\nType=Application\nName=Mine\nExec=mine\nStartupWMClass=Mine");
    const auto menu = DesktopEntries::read({ { folder.path("applications") }, {}, {} });
    const FakeProcesses processes;
    const std::string unit = "app-gnome-cockos\\x2dreaper-";
    processes.start(10, { "wine-like-daw\0"s, "x", 1, 10, unit + "10.scope" });
    processes.start(11, { "its-child\0"s, "x", 10, 11, unit + "10.scope" });
    // A script that starts the DAW as a child process.
    processes.start(20, { "/bin/sh\0/usr/bin/daw\0"s, "daw", 1, 20, unit + "20.scope" });
    processes.start(21, { "/opt/reaper\0"s, "reaper", 20, 21, unit + "20.scope" });
    processes.start(30, { "mine\0"s, "mine", 1, 30 }); // On a desktop without systemd units.
    ProcessTable table(processes.root());
    EXPECT_THAT(listed(table, *menu, { { { 30, 30 }, { "mine", "Mine" } } }),
        ElementsAre("10 com.cockos.reaper REAPER", "20 cockos-reaper Mine",
            "21 com.cockos.reaper REAPER", "30 com.cockos.reaper REAPER"));
}

TEST(ApplicationListTests, OtherApplicationsByTheDesktopsMenu)
{
    const TemporaryFolder folder;
    const auto add = [&](const std::string& file, const std::string& keys) {
        folder.write(file, "[Desktop Entry]\nType=Application\n" + keys);
    };
    add("home/applications/vendor/logic.desktop", "Name=Logic 2\nExec=/opt/Logic/Logic");
    add("home/applications/gone.desktop", "Hidden=true");
    add("system/applications/gone.desktop", "Name=Gone");
    add("system/applications/vendor-logic.desktop", "Name=Overridden");
    add("system/applications/term.desktop", "Name=Term\nStartupWMClass=TermWindow");
    add("system/applications/quiet.desktop", "Name=Quiet\nNoDisplay=true");
    add("system/applications/missing.desktop", "Name=Missing\nTryExec=" + folder.path("no"));
    add("system/applications/quick.desktop", "Name=Quick\nTryExec=quick");
    folder.makeFolder("bin");
    std::filesystem::create_symlink("/bin/sh", folder.path("bin/quick"));
    folder.write("system/applications/broken.desktop", "\xff\n[\n=");
    const std::string home = folder.path("home/applications");
    const auto menu = DesktopEntries::read(
        { { home, folder.path("system/applications"), home }, { folder.path("bin") }, {} });

    const FakeProcesses processes;
    processes.start(10, { "bwrap\0"s, "bwrap", 1, 10, "app-flatpak-vendor\\x2dlogic-10.scope" });
    processes.start(11, { "/app/run\0"s, "run", 10, 11, "app-flatpak-vendor\\x2dlogic-10.scope" });
    processes.start(12, { "/app/gpu\0"s, "gpu", 1, 12, "app-flatpak-vendor\\x2dlogic-10.scope" });
    processes.start(20, { "term\0"s, "term", 1, 20, "app-term-20.scope" });
    processes.start(21, { "./Logic\0"s, "Logic", 20, 21, "app-term-20.scope" });
    processes.start(22, { "./tool\0"s, "tool", 20, 22, "app-term-20.scope" });
    processes.start(23, { "./bare\0"s, "bare", 20, 23, "app-term-20.scope" });
    processes.start(30, { "q\0"s, "q", 1, 30, "app-quiet-30.scope" });
    processes.start(31, { "t\0"s, "t", 1, 31, "app-term@autostart.service" });
    processes.start(32, { "m\0"s, "m", 1, 32, "app-missing-32.scope" });
    processes.start(33, { "g\0"s, "g", 1, 33, "app-gone-33.scope" });
    processes.start(34, { "./first\0"s, "first", 1, 34 });
    processes.start(40, { "C:\\windows\\explorer.exe\0"s, "explorer.exe", 1, 40 });
    ProcessTable table(processes.root());
    const std::map<ProcessKey, WindowClass> windows { { { 20, 20 }, { "x", "X" } },
        { { 34, 34 }, { "x", "QUICK" } }, { { 21, 21 }, { "logic", "Logic" } },
        { { 22, 22 }, { "x", "TermWindow" } }, { { 23, 23 }, { "bare", "Bare" } },
        { { 40, 40 }, { "explorer.exe", "explorer.exe" } } };
    EXPECT_THAT(listed(table, *menu, windows),
        ElementsAre("11 vendor-logic Logic 2", "20 term Term", "21 vendor-logic Logic 2",
            "22 term Term", "23 Bare bare", "30 quiet Quiet (background)",
            "31 term Term (background)", "32 missing m (background)", "33 gone g (background)",
            "34 quick Quick"));

    EXPECT_FALSE(menu->isOutdated());
    add("home/applications/vendor/new.desktop", "Name=New");
    EXPECT_TRUE(menu->isOutdated());
}

} // namespace
} // namespace stemvault::workspace

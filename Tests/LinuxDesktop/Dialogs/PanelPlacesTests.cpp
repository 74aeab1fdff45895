#include "LinuxDesktop/Dialogs/OpenPanelWindow.h"
#include "LinuxDesktop/Dialogs/PanelPlaces.h"
#include "LinuxDesktop/QtTest.h"
#include "Support/TemporaryFolder.h"

namespace stemvault::dialogs {
namespace {

TEST(PanelPlacesTests, BookmarksAreThoseOfTheFileManagers)
{
    struct Row {
        const char* what;
        QStringList found;
        QStringList expected;
    };
    const Row rows[] = {
        { "a folder, one with a name of its own, one with an escaped name",
            foldersInGtkBookmarks("file:///home/u/Mixes\nfile:///srv/nas Studio "
                                  "NAS\nfile:///home/u/M%C3%A4rz%20EP\n"),
            { "/home/u/Mixes", "/srv/nas", QString::fromUtf8("/home/u/März EP") } },
        { "other machines, and no URL at all",
            foldersInGtkBookmarks("sftp://nas/mixes\nfile://other/mixes\n\nnonsense\n"), {} },
        { "twice the same", foldersInGtkBookmarks("file:///a\nfile:///a\n"), { "/a" } },
        { "KDE's places, but for the hidden one and the trash",
            foldersInKdePlaces(
                "<xbel><bookmark href='file:///home/u/Mixes'><title>M</title></bookmark>"
                "<bookmark href='file:///home/u/Hidden'><info><metadata>"
                "<IsHidden>true</IsHidden></metadata></info></bookmark>"
                "<bookmark href='trash:/'/></xbel>"),
            { "/home/u/Mixes" } },
        { "a document that ends in the middle",
            foldersInKdePlaces("<xbel><bookmark href='file:///a'></bookmark><bookmark hr"),
            { "/a" } },
        { "drives, but no part of the system",
            drivesAmong({ "/", "/proc", "/media/u/T7", "/run/media/u/Card", "/mnt/nas", "/boot" }),
            { "/media/u/T7", "/run/media/u/Card", "/mnt/nas" } },
    };
    for (const Row& row : rows)
        EXPECT_EQ(row.found, row.expected) << row.what;
}

TEST(PanelPlacesTests, ThePanelListsWhatIsThereAndLeavesNothingToOtherPrograms)
{
    const TemporaryFolder folder;
    const QByteArray before = qgetenv("XDG_CONFIG_HOME");
    qputenv("XDG_CONFIG_HOME", folder.path().c_str());
    const QUrl mixes = QUrl::fromLocalFile(QString::fromStdString(folder.makeFolder("Mixes")));
    const std::string bookmark = mixes.toEncoded().toStdString();
    folder.write("gtk-3.0/bookmarks", bookmark + "x\n" + bookmark + "\n");

    const QList<QUrl> usual = QFileDialog().sidebarUrls();
    {
        OpenPanelWindow panel({ false, true, true, "Choose", "", {} });
        EXPECT_TRUE(happens([&] { return panel.sidebarUrls().contains(mixes); }));
        EXPECT_FALSE(panel.sidebarUrls().contains(QUrl(mixes.toString() + "x"))) << "not there";
    }
    EXPECT_EQ(QFileDialog().sidebarUrls(), usual);
    before.isEmpty() ? qunsetenv("XDG_CONFIG_HOME") : qputenv("XDG_CONFIG_HOME", before);
}

} // namespace
} // namespace stemvault::dialogs

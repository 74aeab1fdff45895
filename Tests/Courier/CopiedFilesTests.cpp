#include "Courier/CopiedFiles.h"
#include "Courier/FocusedWindow.h"

#include <gmock/gmock.h>

namespace stemvault {
namespace {

using testing::ElementsAreArray;

TEST(CopiedFiles, AreReadFromWhatEachFileManagerPutsOnTheClipboard)
{
    using namespace std::literals;
    const struct {
        const char* what;
        std::string format, content;
        std::vector<std::string> uris;
    } rows[] = {
        { "Nautilus, Nemo, Thunar", "x-special/gnome-copied-files",
            "copy\nfile:///a.wav\nfile:///b", { "file:///a.wav", "file:///b" } },
        { "cut files, only read", "x-special/gnome-copied-files", "cut\nfile:///a.wav",
            { "file:///a.wav" } },
        { "with a zero at the end", "x-special/gnome-copied-files", "copy\nfile:///a.wav\0"s,
            { "file:///a.wav" } },
        { "Caja", "x-special/mate-copied-files", "copy\nfile:///a.wav", { "file:///a.wav" } },
        { "Dolphin", "text/uri-list", "file:///a.wav\r\nfile:///b.wav\r\n",
            { "file:///a.wav", "file:///b.wav" } },
        { "a comment in the list", "text/uri-list", "# two\r\nfile:///a.wav\r\n",
            { "file:///a.wav" } },
        { "an older Nautilus", "UTF8_STRING", "x-special/nautilus-clipboard\ncopy\nfile:///a.wav\n",
            { "file:///a.wav" } },
        { "a text about a file", "UTF8_STRING", "copy\nfile:///a.wav\n", {} },
        { "a link from a browser", "text/uri-list", "https://stemvault.example/a.wav\r\n", {} },
        { "on a server", "text/uri-list", "sftp://server/a.wav\r\nfile:///b.wav\r\n",
            { "file:///b.wav" } },
        { "odd names, spelt in two ways", "text/uri-list",
            "file:///100%25%20Gr%c3%b6%C3%9Fe%0A%ff.wav\r\nfile:///it's(1).wav\r\n",
            { "file:///100%25%20Gr%C3%B6%C3%9Fe%0A%FF.wav", "file:///it%27s%281%29.wav" } },
        { "nothing", "x-special/gnome-copied-files", "copy", {} },
    };
    for (const auto& row : rows)
        EXPECT_THAT(copiedFiles(row.format, row.content), ElementsAreArray(row.uris)) << row.what;
}

TEST(FocusedWindow, TerminalsAreToldByTheirClass)
{
    for (const char* terminal : { "xterm XTerm", "gnome-terminal-server Gnome-terminal ",
             "konsole konsole", "org.gnome.Console Org.gnome.Console", "Alacritty Alacritty",
             "xfce4-terminal Xfce4-terminal" })
        EXPECT_TRUE(isTerminalClass(terminal)) << terminal;
    for (const char* other : { "org.gnome.Nautilus Org.gnome.Nautilus", "thunar Thunar",
             "dolphin dolphin", "caja Caja", "reaper REAPER" })
        EXPECT_FALSE(isTerminalClass(other)) << other;
}

} // namespace
} // namespace stemvault

#include "Foundation/DAWTable.h"
#include "Foundation/Environment.h"
#include "Foundation/FileURI.h"
#include "Foundation/FileURL.h"
#include "Foundation/HomeDirectory.h"
#include "Foundation/PathText.h"
#include "Foundation/UUID.h"
#include "Foundation/UnicodeText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <pwd.h>
#include <string>
#include <string_view>
#include <unistd.h>

namespace stemvault {
namespace {

TEST(PathText, TakesPathsApart)
{
    const struct {
        std::string path, last, parent, extension;
    } rows[] = {
        { "/a/Mix.wav", "Mix.wav", "/a", "wav" },
        { "/a/Mix.WAV/", "Mix.WAV", "/a", "WAV" },
        { "/a.b/Mix", "Mix", "/a.b", "" },
        { "/a//Mix.", "Mix.", "/a", "" },
        { "/Mix.tar.gz", "Mix.tar.gz", "/", "gz" },
        { "/.wav", ".wav", "/", "wav" },
        { "/", "/", "/", "" },
        { "Mix.wav", "Mix.wav", "", "wav" },
        { "/a/\xFFMix.wav", "\xFFMix.wav", "/a", "wav" },
    };
    for (const auto& row : rows) {
        EXPECT_EQ(lastPathComponent(row.path), row.last) << row.path;
        EXPECT_EQ(deletingLastPathComponent(row.path), row.parent) << row.path;
        EXPECT_EQ(pathExtension(row.path), row.extension) << row.path;
    }
    EXPECT_EQ(appendingPathComponent("/a", "b"), "/a/b");
    EXPECT_EQ(appendingPathComponent("/", "b"), "/b");
    EXPECT_EQ(FileURL("/a/b/"), FileURL("/a/b"));
    EXPECT_NE(FileURL("/"), FileURL(""));
    EXPECT_EQ(pathOfFileURI("file:///a%20b"), "/a b");
    EXPECT_EQ(pathOfFileURI("file:///a%00b"), std::nullopt);
}

TEST(HomeDirectory, ComesFromTheAccountWhereTheVariableIsNoPath)
{
    const std::string before = environment("HOME");
    ::setenv("HOME", "/home/a/", 1);
    EXPECT_EQ(homeDirectory(), "/home/a");
    const passwd* const account = ::getpwuid(::getuid());
    ASSERT_NE(account, nullptr);
    ::setenv("HOME", "relative", 1);
    EXPECT_EQ(homeDirectory(), account->pw_dir);
    ::unsetenv("HOME");
    EXPECT_EQ(homeDirectory(), account->pw_dir);
    ::setenv("HOME", before.c_str(), 1);
}

TEST(UUID, ReadsOnlyItsCanonicalForm)
{
    const std::string text = "0123ABCD-4567-89EF-0123-456789ABCDEF";
    for (const auto& valid : { text, std::string("0123abcd-4567-89ef-0123-456789abcdef") })
        EXPECT_EQ(UUID::fromString(valid).value_or(UUID()).uuidString(), text);
    for (const std::string& malformed : { text.substr(1), text + "0", "G" + text.substr(1),
             std::string("0123ABC-D4567-89EF-0123-456789ABCDEF"), std::string() })
        EXPECT_FALSE(UUID::fromString(malformed)) << malformed;
    const std::string fresh = UUID().uuidString();
    EXPECT_EQ(fresh[14], '4');
    EXPECT_NE(std::string("89AB").find(fresh[19]), std::string::npos);
    EXPECT_NE(UUID(), UUID());
}

TEST(UnicodeText, LowersAndShowsEveryName)
{
    const struct {
        const char* what;
        std::string text, lowered, shown;
    } rows[] = {
        { "plain", "MIX.Wav", "mix.wav", "MIX.Wav" },
        { "beyond ASCII", "ÄÖÜ Ж.WAV", "äöü ж.wav", "ÄÖÜ Ж.WAV" },
        { "a dotted capital I, which grows", "İ", "i̇", "İ" },
        { "not UTF-8", "MIX\xE4.WAV", "mix\xE4.wav", "MIX\uFFFD.WAV" },
        { "cut in the middle of a character", "Ü\xC3", "Ü\xC3", "Ü\uFFFD" },
        { "line breaks and control characters", "A\nB\x7F\u0085", "a\nb\x7F\u0085",
            "A\uFFFDB\uFFFD\uFFFD" },
        { "marks that turn or break the line", "a\u202Evaw.\u2066b\u2028",
            "a\u202Evaw.\u2066b\u2028", "a\uFFFDvaw.\uFFFDb\uFFFD" },
    };
    for (const auto& row : rows) {
        EXPECT_EQ(lowercased(row.text), row.lowered) << row.what;
        EXPECT_EQ(printable(row.text), row.shown) << row.what;
    }
}

TEST(DAWTable, IsWrittenAsItIsRead)
{
    const auto rows = knownDAWs();
    for (const DAW& daw : rows) {
        EXPECT_FALSE(std::ranges::empty(daw.sessionFiles)) << daw.identifier;
        for (const auto* names : { &daw.programs, &daw.desktopEntries, &daw.sessionFiles })
            for (const std::string_view name : *names) {
                EXPECT_EQ(name, lowercased(name)) << daw.identifier;
                EXPECT_GE(name.find_first_of("*#"), name.size() - 1) << name;
            }
        for (const std::string_view extension : daw.sessionFiles)
            EXPECT_EQ(extension.find_first_of(".*#"), extension.npos) << extension;
        for (const std::string_view folder : daw.workingFolders)
            EXPECT_FALSE(folder.starts_with('/') || folder.ends_with('/')) << folder;
        EXPECT_EQ(dawWithBundleIdentifier(std::string(daw.identifier) + ".Beta"), &daw)
            << "No other row's identifier begins it.";
    }
    // The table begins with the DAWs that were supported first, in this order.
    const std::string_view first[] = { "com.avid.ProTools", "com.apple.logic10", "com.ableton.live",
        "com.presonus.studioone5", "com.presonus.studioone6", "com.steinberg.cubase12",
        "com.cockos.reaper" };
    EXPECT_TRUE(std::ranges::equal(first, rows.first(std::size(first)), {}, {}, &DAW::identifier));
    EXPECT_EQ(dawWithBundleIdentifier("org.gnome.Maps"), nullptr);
}

} // namespace
} // namespace stemvault

#include "LinuxDesktop/Windows/DisplayText.h"

#include <gtest/gtest.h>

namespace stemvault::windows {
namespace {

TEST(DisplayTextTest, NamesAreShownHarmlesslyAndOtherwiseAsTheyStand)
{
    struct Row {
        const char* what;
        std::string text;
        QString expected;
    };
    const Row rows[] = {
        { "any script, markup and ampersands", "Café 日本 <b>&amp; Tom & Jerry",
            "Café 日本 <b>&amp; Tom & Jerry" },
        { "an emoji beyond the basic plane", "mix \U0001F3B8.wav", "mix \U0001F3B8.wav" },
        { "bytes that are not UTF-8", "Caf\xE9.wav", "Caf\uFFFD.wav" },
        { "line feed, tab and escape in one line", "a\nb\tc\x1B[0m", "a\u240Ab\u2409c\u241B[0m" },
        { "a name that would read as another", "x\u202Evaw\u202C.exe", "x\uFFFDvaw\uFFFD.exe" },
        { "a mark of a right-to-left script stays", "a\u200Fb", "a\u200Fb" },
        { "the delete character", "a\x7F", "a\u2421" },
        { "other ends of a line", "a\u2028b\u0085c", "a\u2424b\uFFFDc" },
    };
    for (const Row& row : rows)
        EXPECT_EQ(displayLine(row.text), row.expected) << row.what;
    EXPECT_EQ(displayTitle("Add & Go"), "Add && Go");
}

TEST(DisplayTextTest, LinesBreakWhereTheTextSaysAndStayWithinReason)
{
    EXPECT_EQ(displayLines("One\r\n\tTwo\nfrom\x1B A\n\n+ 2 more"),
        QString("One\n    Two\nfrom\u241B A\n\n+ 2 more"));

    const std::string notes(200, '\n');
    EXPECT_EQ(displayLines(notes), QString::fromStdString(notes)) << "release notes stay whole";
    EXPECT_LT(displayLines(std::string(1'000'000, 'x')).size(), 25'000);

    std::string guitars; // Truncation must not split a surrogate pair.
    for (int guitar = 0; guitar < 200; ++guitar)
        guitars += "\U0001F3B8";
    for (const std::string& text : { guitars, "a" + guitars, guitars + "a" }) {
        const QString line = displayLine(text);
        EXPECT_LT(line.size(), 290);
        EXPECT_EQ(line, QString::fromUtf8(line.toUtf8())) << "cut within a character";
    }
}

} // namespace
} // namespace stemvault::windows

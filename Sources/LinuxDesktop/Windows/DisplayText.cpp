#include "LinuxDesktop/Windows/DisplayText.h"

#include <QStringList>

namespace stemvault::windows {

namespace {

constexpr qsizetype maxLineLength = 280;
// Large enough for release notes, and for a link that the user should copy.
constexpr qsizetype maxTextLength = 20'000;
constexpr QChar ellipsis(0x2026);

// Directional marks (U+200E, U+200F, U+061C) are kept: they occur in names in right-to-left scripts
// and do not reverse other text.
bool turnsText(char16_t unit)
{
    return (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
}

char16_t shown(char16_t unit)
{
    if (unit < 0x20)
        return static_cast<char16_t>(0x2400 + unit); // The symbol of that control character.
    if (unit == 0x7F)
        return 0x2421;
    if (unit == 0x2028 || unit == 0x2029)
        return 0x2424;
    if ((unit > 0x7F && unit < 0xA0) || turnsText(unit))
        return QChar::ReplacementCharacter;
    return unit;
}

QString withoutControls(QString text)
{
    for (QChar& character : text)
        character = QChar(shown(character.unicode()));
    return text;
}

QString withShortMiddle(const QString& line, qsizetype longest)
{
    if (line.size() <= longest)
        return line;
    qsizetype start = longest * 2 / 3;
    if (line.at(start).isLowSurrogate())
        --start;
    qsizetype end = line.size() - longest / 4;
    if (line.at(end).isLowSurrogate())
        ++end;
    return line.first(start) + ellipsis + line.sliced(end);
}

QString decoded(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace

QString displayWholeLine(std::string_view text)
{
    return withoutControls(decoded(text));
}

QString displayLine(std::string_view text)
{
    return withShortMiddle(displayWholeLine(text), maxLineLength);
}

QString displayLines(std::string_view text)
{
    QStringList lines =
        decoded(text).replace(QLatin1String("\r\n"), QLatin1String("\n")).split(u'\n');
    for (QString& line : lines)
        line = withoutControls(line.replace(u'\t', QStringLiteral("    ")));
    return withShortMiddle(lines.join(u'\n'), maxTextLength);
}

QString displayTitle(std::string_view text)
{
    return displayLine(text).replace(u'&', QStringLiteral("&&"));
}

// A tool tip breaks lines only at blanks, and a path of up to 4,096 bytes may have none.
QString toolTipText(const QString& text)
{
    constexpr int maxWordLength = 40;
    constexpr QChar mayBreakHere(0x200B);
    if (text.isEmpty())
        return {};
    QString breakable;
    int length = 0;
    for (const QChar character : text) {
        const bool isPair = character.isLowSurrogate();
        if (length >= maxWordLength && !isPair) {
            breakable += mayBreakHere;
            length = 0;
        }
        breakable += character;
        length = character.isSpace() ? 0 : length + 1;
        if (character == u'/') {
            breakable += mayBreakHere;
            length = 0;
        }
    }
    return QStringLiteral("<qt>%1</qt>").arg(breakable.toHtmlEscaped());
}

} // namespace stemvault::windows

#include "LinuxDesktop/UserDefaults/DateText.h"

#include <array>
#include <cstdio>

namespace stemvault::user_defaults {

using namespace std::chrono;

std::string textOfDate(system_clock::time_point date)
{
    const auto moment = floor<milliseconds>(date);
    const auto day = floor<days>(moment);
    const year_month_day calendar(day);
    const hh_mm_ss time(moment - day);
    std::array<char, 64> text {};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ",
        static_cast<int>(calendar.year()), static_cast<unsigned>(calendar.month()),
        static_cast<unsigned>(calendar.day()), static_cast<int>(time.hours().count()),
        static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()),
        static_cast<int>(time.subseconds().count()));
    return text.data();
}

std::optional<system_clock::time_point> dateOfText(const std::string& text)
{
    int yearNumber = 0;
    unsigned monthNumber = 0;
    unsigned dayNumber = 0;
    std::array<int, 4> parts {};
    // sscanf accepts other forms too, so the result is formatted again below and must be the same.
    if (std::sscanf(text.c_str(), "%4d-%2u-%2uT%2d:%2d:%2d.%3dZ", &yearNumber, &monthNumber,
            &dayNumber, &parts[0], &parts[1], &parts[2], &parts[3])
        != 7)
        return std::nullopt;
    const year_month_day calendar { year(yearNumber), month(monthNumber), day(dayNumber) };
    // The clock cannot represent years far outside this range.
    if (!calendar.ok() || yearNumber < 1700 || yearNumber > 2200)
        return std::nullopt;
    const system_clock::time_point date = sys_days(calendar) + hours(parts[0]) + minutes(parts[1])
        + seconds(parts[2]) + milliseconds(parts[3]);
    return textOfDate(date) == text ? std::optional(date) : std::nullopt;
}

} // namespace stemvault::user_defaults

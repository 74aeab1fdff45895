#include "LinuxDesktop/FileEvents/InotifyEvent.h"
#include "LinuxDesktop/FileEvents/MountTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <sys/inotify.h>

namespace stemvault {
namespace {

using testing::ElementsAre;

std::string raw(std::array<std::uint32_t, 4> header, const std::string& name)
{
    static_assert(sizeof header == sizeof(inotify_event));
    std::string bytes(sizeof header, 0);
    std::memcpy(bytes.data(), &header, sizeof header);
    return bytes + name;
}

std::vector<std::string> eventsIn(const std::string& bytes)
{
    std::span<const std::byte> rest = std::as_bytes(std::span(bytes));
    std::vector<std::string> texts;
    while (const auto event = takeInotifyEvent(rest))
        texts.push_back(std::to_string(event->watch) + ":" + std::to_string(event->mask) + ":"
            + std::to_string(event->cookie) + ":" + std::string(event->name));
    return texts;
}

TEST(InotifyEvent, IsTakenFromWhatWasReadAsFarAsItIsWhole)
{
    const std::string named =
        raw({ 7, IN_CREATE, 0, 16 }, std::string("Mix.wav") + std::string(9, 0));
    const std::string bare = raw({ UINT32_MAX, IN_Q_OVERFLOW, 3, 0 }, "");
    const std::string unpadded = raw({ 8, IN_CREATE, 0, 4 }, "abcd");
    EXPECT_THAT(eventsIn(named + bare), ElementsAre("7:256:0:Mix.wav", "-1:16384:3:"));
    EXPECT_THAT(eventsIn(unpadded), ElementsAre("8:256:0:abcd"));
    EXPECT_THAT(eventsIn(bare + named.substr(0, named.size() - 1)), ElementsAre("-1:16384:3:"));
}

TEST(MountTable, ReadsMountPointsWhateverTheyAreCalled)
{
    EXPECT_THAT(parseMountPoints("22 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
                                 "23 22 0:5 / /media/My\\040Drive rw,x shared:1 - vfat /dev/b rw\n"
                                 "24 22 0:6 / /a\\134b\\012c\\9\\04 rw - tmpfs none rw\n"
                                 "cut off\n\n25 22 0:7 / /last"),
        ElementsAre("/", "/media/My Drive", "/a\\b\nc\\9\\04", "/last"));
}

} // namespace
} // namespace stemvault

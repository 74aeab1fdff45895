#include "FileManager/TemporaryItem.h"

#include <gtest/gtest.h>

#include <string>

namespace stemvault {
namespace {

TEST(TemporaryName, FitsAndIsKnownAgain)
{
    const std::string wide(250, 'a');
    const struct {
        const char* what;
        std::string name;
        std::size_t length;
    } rows[] = {
        { "short", "Mix.wav", 7 + 23 },
        { "as long as names get", std::string(255, 'a'), 255 },
        { "on a disk with shorter names", std::string(143, 'a'), 143 },
        { "cut before a character of two bytes", std::string(231, 'a') + "Ü" + wide, 254 },
        { "cut before a character of four bytes", std::string(229, 'a') + "𝄞" + wide, 252 },
        { "not text", std::string(255, '\xBF'), 252 },
    };
    for (const auto& row : rows) {
        const std::string name = temporaryName(row.name);
        EXPECT_EQ(name.size(), row.length) << row.what;
        EXPECT_TRUE(isTemporaryName(name)) << name;
        EXPECT_FALSE(isTemporaryName(asideName(row.name))) << row.what;
    }
    for (const char* name : { ".syncthing.~.123456.tmp", "Mix.123456.tmp",
             ".syncthing.~Mix.12345.tmp", ".syncthing.~Mix.12345-.tmp",
             ".syncthing.~Mix.123456.tmp2", ".syncthing.~Mix.wav", ".~Mix.123456.tmp" })
        EXPECT_FALSE(isTemporaryName(name)) << name;
}

} // namespace
} // namespace stemvault

#include "Courier/CourierText.h"
#include "Support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace stemvault {
namespace {

TEST(CourierText, APathLeadsWhereOpeningItWould)
{
    const TemporaryFolder home;
    const std::string real = std::filesystem::canonical(home.path());
    home.makeFolder("elsewhere/mixes");
    std::filesystem::create_directory_symlink(home.path("elsewhere/mixes"), home.path("link"));
    std::filesystem::current_path(home.path());
    const struct {
        const char* what;
        std::string argument, path;
    } rows[] = {
        { "absolute", "/a/b.wav", "/a/b.wav" },
        { "in the working directory", "b.wav", real + "/b.wav" },
        { "spelt oddly", ".//a/./b.wav", real + "/a/b.wav" },
        { "through a link", "link/b.wav", real + "/link/b.wav" },
        { "up again behind a link", "link/../b.wav", real + "/elsewhere/b.wav" },
        { "a folder, up behind a link", "link/..", real + "/elsewhere" },
        { "up and down", "elsewhere/../link/b.wav", real + "/elsewhere/mixes/b.wav" },
        { "up from what is not there", "/no such folder/../b.wav", "/no such folder/../b.wav" },
    };
    for (const auto& row : rows)
        EXPECT_EQ(absolutePath(row.argument), row.path) << row.what;
    std::filesystem::current_path(home.makeFolder("gone"));
    std::filesystem::remove(home.path("gone"));
    EXPECT_EQ(absolutePath("b.wav"), "b.wav");
    std::filesystem::current_path("/");
}

} // namespace
} // namespace stemvault

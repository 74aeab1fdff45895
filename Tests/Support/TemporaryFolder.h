#pragma once

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <stdlib.h>
#include <string>

namespace stemvault {

/// A private folder for a test, removed by the destructor.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "stemvault-XXXXXX").string();
        folder = mkdtemp(pattern.data());
    }
    ~TemporaryFolder() { removeAll(folder); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::string& path() const { return folder; }
    [[nodiscard]] std::string path(const std::string& name) const { return folder + "/" + name; }

    /// Removes a file or a folder tree, including folders that even their owner may not enter.
    static void removeAll(const std::filesystem::path& path)
    {
        namespace fs = std::filesystem;
        std::error_code ignored;
        if (fs::symlink_status(path, ignored).type() == fs::file_type::directory) {
            fs::permissions(path, fs::perms::owner_all, fs::perm_options::add, ignored);
            for (const auto& entry : fs::directory_iterator(path, ignored))
                removeAll(entry.path());
        }
        fs::remove(path, ignored);
    }

    /// Creates a folder and its parents, and returns its path.
    std::string makeFolder(const std::string& name) const
    {
        std::filesystem::create_directories(path(name));
        return path(name);
    }

    /// Writes a file, creating its parent folders, and returns its path.
    std::string write(const std::string& name, const std::string& content) const
    {
        std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
        std::ofstream(path(name), std::ios::binary) << content;
        return path(name);
    }

    [[nodiscard]] std::string read(const std::string& name) const
    {
        std::ifstream file(path(name), std::ios::binary);
        // Byte by byte, 1 MiB would take half a second under the thread sanitizer.
        std::ostringstream content;
        content << file.rdbuf();
        return content.str();
    }

    /// The names of the items directly in a folder, sorted.
    [[nodiscard]] std::set<std::string> names(const std::string& name) const
    {
        std::set<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(path(name)))
            found.insert(entry.path().filename().string());
        return found;
    }

private:
    std::string folder;
};

} // namespace stemvault

// stemvault-copy: makes one copy as the program does, for benchmarks and manual tests.

#include "FileManager/FileCopy.h"
#include "Foundation/PathText.h"

#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using namespace stemvault;

namespace {

constexpr std::string_view usage =
    R"(Usage: stemvault-copy [--replace] [--no-sync] SOURCE DESTINATION

Copies a file, or a folder with everything in it, whole or not at all.
DESTINATION is the path of the new item. If a folder is there, the item is put
into it under its own name. An existing item stays unless --replace is given.

  --replace  put the copy in the place of an existing item once it is whole
  --no-sync  return before the copy has reached the disk, as cp does
  --help     show this text
)";

struct Request {
    CopyOptions options;
    std::string source;
    std::string destination;
};

std::string absolute(const std::string& path)
{
    std::error_code error;
    return std::filesystem::absolute(path, error).string();
}

std::string insideIfFolder(const std::string& destination, const std::string& source)
{
    std::error_code error;
    if (!std::filesystem::is_directory(destination, error))
        return destination;
    return appendingPathComponent(destination, lastPathComponent(source));
}

std::optional<Request> requestFrom(std::vector<std::string> arguments)
{
    Request request;
    if (std::erase(arguments, "--no-sync") > 0)
        request.options.durability = Durability::InMemory;
    if (std::erase(arguments, "--replace") > 0)
        request.options.ifExists = IfExists::Replace;
    if (arguments.size() != 2 || arguments[0].empty() || arguments[1].empty())
        return std::nullopt;
    request.source = absolute(arguments[0]);
    request.destination = insideIfFolder(absolute(arguments[1]), request.source);
    return request;
}

} // namespace

int main(int count, char** values)
{
    const std::vector<std::string> arguments(values + 1, values + count);
    if (arguments == std::vector<std::string> { "--help" }) {
        std::cout << usage;
        return 0;
    }
    const auto request = requestFrom(arguments);
    if (!request) {
        std::cerr << usage;
        return 1;
    }
    const auto copied = copyItem(request->source, request->destination, request->options);
    if (copied)
        return 0;
    std::cerr << copied.error() << '\n';
    return 1;
}

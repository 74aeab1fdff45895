#include "Foundation/PathText.h"

namespace stemvault {

namespace {

std::string_view withoutTrailingSlashes(std::string_view path)
{
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return path;
}

} // namespace

std::string lastPathComponent(std::string_view path)
{
    path = withoutTrailingSlashes(path);
    if (path == "/")
        return "/";
    return std::string(path.substr(path.rfind('/') + 1));
}

std::string deletingLastPathComponent(std::string_view path)
{
    path = withoutTrailingSlashes(path);
    const auto slash = path.rfind('/');
    if (slash == std::string_view::npos)
        return {};
    return std::string(withoutTrailingSlashes(path.substr(0, slash == 0 ? 1 : slash)));
}

std::string appendingPathComponent(std::string_view folder, std::string_view name)
{
    std::string path(folder);
    if (!path.ends_with('/'))
        path += '/';
    return path.append(name);
}

std::string pathExtension(std::string_view path)
{
    const std::string name = lastPathComponent(path);
    const auto stop = name.rfind('.');
    return stop == std::string::npos ? std::string() : name.substr(stop + 1);
}

std::string_view withoutTrailingSlash(std::string_view path)
{
    if (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return path;
}

} // namespace stemvault

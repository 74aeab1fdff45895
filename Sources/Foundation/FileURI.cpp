#include "Foundation/FileURI.h"

#include "Foundation/PercentEncoding.h"

namespace stemvault {

namespace {

/// The part after the host; empty if the host is another machine.
std::string_view localPart(std::string_view uri)
{
    for (const std::string_view thisMachine : { "file://localhost", "file://", "file:" })
        if (uri.starts_with(thisMachine))
            return uri.substr(thisMachine.size());
    return {};
}

} // namespace

std::string fileURI(std::string_view path)
{
    return "file://" + percentEncoded(path);
}

std::optional<std::string> pathOfFileURI(std::string_view uri)
{
    const std::string_view part = localPart(uri);
    if (!part.starts_with('/') || part.find_first_of("?#") != std::string_view::npos)
        return std::nullopt;
    auto path = percentDecoded(part);
    if (path && path->find('\0') != std::string::npos)
        return std::nullopt;
    return path;
}

} // namespace stemvault

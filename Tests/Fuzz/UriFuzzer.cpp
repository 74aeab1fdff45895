#include "Foundation/FileURI.h"
#include "Foundation/PercentEncoding.h"
#include "Foundation/URLComponents.h"
#include "Fuzz/Fuzzer.h"

// Parses the URIs that the Courier or any other program sends over the bus, and web URLs.
namespace stemvault {

void feed(std::string_view input)
{
    const std::string text(input);
    if (const auto path = pathOfFileURI(text)) {
        require(path->starts_with('/') && path->size() <= text.size()
                && path->find('\0') == std::string::npos,
            "the path of a URI is absolute and can be a file's");
        require(pathOfFileURI(fileURI(*path)) == path, "a path comes through the bus");
    }
    const auto uri = fileURI("/" + text);
    require(URLComponents::fromString(uri).has_value(), "the URI of a file is one");
    require(pathOfFileURI(uri).has_value() == (text.find('\0') == std::string::npos),
        "every name that a file can have is taken");
    require(percentDecoded(percentEncoded(text)) == text, "any bytes can be encoded");

    auto url = URLComponents::fromString(text);
    if (!url)
        return;
    require(url->absoluteString() == text, "a URL stays as it was written");
    url->setQueryItems({ { text, text }, { "", "" } });
    require(URLComponents::fromString(url->absoluteString()).has_value(),
        "a URL stays one with any query");
}

} // namespace stemvault

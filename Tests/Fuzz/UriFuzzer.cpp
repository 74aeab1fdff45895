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
        mustHold(path->starts_with('/') && path->size() <= text.size()
                && path->find('\0') == std::string::npos,
            "the path of a URI is absolute and can be a file's");
        mustHold(pathOfFileURI(fileURI(*path)) == path, "a path comes through the bus");
    }
    const auto uri = fileURI("/" + text);
    mustHold(URLComponents::fromString(uri).has_value(), "the URI of a file is one");
    mustHold(pathOfFileURI(uri).has_value() == (text.find('\0') == std::string::npos),
        "every name that a file can have is taken");
    mustHold(percentDecoded(percentEncoded(text)) == text, "any bytes can be encoded");

    auto url = URLComponents::fromString(text);
    if (!url)
        return;
    mustHold(url->absoluteString() == text, "a URL stays as it was written");
    url->setQueryItems({ { text, text }, { "", "" } });
    mustHold(URLComponents::fromString(url->absoluteString()).has_value(),
        "a URL stays one with any query");
}

} // namespace stemvault

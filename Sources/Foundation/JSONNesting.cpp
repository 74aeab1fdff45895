#include "Foundation/JSONNesting.h"

#include <cstddef>

namespace stemvault {

bool isNestedTooDeeply(std::string_view json)
{
    constexpr int deepest = 512;
    int depth = 0;
    bool isInString = false;
    for (std::size_t at = 0; at < json.size(); ++at) {
        const char letter = json[at];
        if (isInString && letter == '\\')
            ++at;
        else if (letter == '"')
            isInString = !isInString;
        else if (!isInString && (letter == '[' || letter == '{') && ++depth > deepest)
            return true;
        else if (!isInString && (letter == ']' || letter == '}'))
            --depth;
    }
    return false;
}

} // namespace stemvault

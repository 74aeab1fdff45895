#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <span>
#include <string_view>

namespace stemvault {

/// A short list of names, in the order in which a row of the table lists them.
class DAWNames {
public:
    constexpr DAWNames(std::initializer_list<std::string_view> list) : count(list.size())
    {
        std::ranges::copy(list, names.begin());
    }

    [[nodiscard]] constexpr const std::string_view* begin() const { return names.data(); }
    [[nodiscard]] constexpr const std::string_view* end() const { return names.data() + count; }

private:
    std::array<std::string_view, 12> names;
    std::size_t count;
};

/// What we know about one DAW. The desktop adapters recognise it by its programs and desktop
/// entries; the program finds its session by its session files and ignores its working folders.
struct DAW {
    /// The prefix of its applications' bundle identifiers.
    std::string_view identifier;

    /// The name that users know it by. Empty where the application's own name is more specific,
    /// because it includes the edition, for example.
    std::string_view name;

    /// The names of its executables, in lower case and without ".exe". A trailing "*" matches any
    /// text, including none; a trailing "#" matches any text that begins with a digit.
    DAWNames programs;

    /// The names of its desktop entries, in lower case and without ".desktop", as its vendor,
    /// Flatpak and Snap install them. A trailing "*" or "#" is as above.
    DAWNames desktopEntries;

    /// The extensions of its session files, in lower case and without the dot.
    DAWNames sessionFiles;

    /// The folders that it keeps its working files in, such as takes, frozen tracks and imports:
    /// paths relative to the session folder, spelled as the DAW spells them. No audio file in or
    /// below them is a bounce. Folders that it exports to are not listed.
    DAWNames workingFolders;

    /// A part of its installation path, in lower case, that distinguishes it from another row with
    /// the same program name. Empty where the name is enough.
    std::string_view installedIn = {};
};

/// All known DAWs. If several rows match an application, the first one counts.
[[nodiscard]] std::span<const DAW> knownDAWs();

/// The DAW that this bundle identifier belongs to; null if there is none.
[[nodiscard]] const DAW* dawWithBundleIdentifier(std::string_view bundleIdentifier);

} // namespace stemvault

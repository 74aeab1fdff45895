#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <span>
#include <string_view>

namespace stemvault {

/// A short list of names, in the order in which a row of the table gives them.
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

/// What is known of one DAW. The desktop recognises it by its programs and desktop entries; the
/// program finds its session by its files and leaves its working folders out.
struct DAW {
    /// What the bundle identifiers of its applications begin with.
    std::string_view identifier;

    /// As users call it. Empty where the program's own name says more, such as its edition.
    std::string_view name;

    /// The names of its executables, in lower case and without ".exe". A "*" at the end stands for
    /// any text, none included, and a "#" for any that begins with a digit.
    DAWNames programs;

    /// The names of its desktop entries, in lower case and without ".desktop": those that its
    /// makers, Flatpak and Snap install. A "*" or "#" at the end is as above.
    DAWNames desktopEntries;

    /// The extensions of its session files, in lower case and without the dot.
    DAWNames sessionFiles;

    /// Where in the folder of a session it keeps what it works with, such as takes, frozen tracks
    /// and imports: paths from that folder, spelled as the DAW does. No audio file in or below
    /// them is a bounce. The folders that it exports to are not among them.
    DAWNames workingFolders;

    /// Part of the path that it is installed in, in lower case, where another row's program has
    /// the same name. Empty otherwise.
    std::string_view installedIn = {};
};

/// Every DAW that we know. Where more than one row fits an application, the first one counts.
[[nodiscard]] std::span<const DAW> knownDAWs();

/// The DAW that the application with this bundle identifier is; null when it is none.
[[nodiscard]] const DAW* dawWithBundleIdentifier(std::string_view bundleIdentifier);

} // namespace stemvault

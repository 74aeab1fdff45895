#pragma once

#include "Courier/X11Display.h"

#include <vector>

namespace stemvault {

/// The clipboard of X programs. Its owner provides the content on request, in several formats.
class X11Clipboard {
public:
    /// `display` must outlive it.
    explicit X11Clipboard(const X11Display& display);

    [[nodiscard]] bool hasOwner() const;

    /// Absent when the owner does not have that format, or does not answer in time.
    [[nodiscard]] std::optional<X11Property> read(std::string_view format, Deadline deadline) const;

    /// waitForChange() waits until a program puts something on the clipboard after watch() was
    /// called; false when none does in time.
    void watch() const;
    [[nodiscard]] bool waitForChange(Deadline deadline) const;

    struct Item {
        xcb_atom_t format;
        X11Property value;
    };
    using Content = std::vector<Item>;

    /// A copy of the content, in every format worth keeping that its owner provides in time.
    [[nodiscard]] Content content(Deadline deadline) const;

    /// Takes over the clipboard with these items; without any, empties it. The items can be read
    /// only while serve() runs.
    void put(const Content& items) const;
    /// Answers requests for the items, until another program puts something on the clipboard or the
    /// server exits.
    void serve(const Content& items) const;

private:
    [[nodiscard]] std::optional<X11Property> convert(xcb_atom_t format, Deadline deadline) const;
    [[nodiscard]] std::optional<X11Property> readPortions(Deadline deadline) const;
    [[nodiscard]] std::vector<xcb_atom_t> formatsWorthKeeping(Deadline deadline) const;
    void answer(const xcb_selection_request_event_t& request, const Content& items) const;
    [[nodiscard]] bool give(
        xcb_window_t window, xcb_atom_t property, xcb_atom_t format, const Content& items) const;

    const X11Display& display;
    xcb_atom_t clipboard;
    xcb_atom_t place; ///< The property of our window that receives the answers.
    xcb_atom_t targets;
    xcb_atom_t portions;
};

} // namespace stemvault

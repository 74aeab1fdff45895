#pragma once

class QWidget;

namespace stemvault::windows {

/// Puts a window in front of all others and gives it the keyboard focus, as soon as it is on the
/// screen. Meant for a window that the user must see now although nobody clicked on this program:
/// window managers refuse that to a program that does not pass the current time.
void bringToFront(QWidget& window);

/// Makes a hidden window appear without taking the keyboard focus. From then on the user can switch
/// to it as to any other.
void showWithoutKeyboard(QWidget& window);

} // namespace stemvault::windows

#pragma once

class QWidget;

namespace stemvault {

/// Puts a window in front of all others and gives it the keyboard, as soon as it is on the screen.
/// Meant for a window the user has to see now although nobody clicked on this program: window
/// managers refuse that to a program that does not know the current time.
void bringToFront(QWidget& window);

/// Has a window not yet shown leave the keyboard where it is when it comes up. From then on the
/// user can turn to it as to any other.
void showWithoutKeyboard(QWidget& window);

} // namespace stemvault

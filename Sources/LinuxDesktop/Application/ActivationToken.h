#pragma once

class QByteArray;

namespace stemvault::application {

/// Uses the token that a desktop issues with a click. On Wayland it permits the program to bring a
/// window to the front: the toolkit reads it from the environment and uses it up with the next
/// window that it activates. On X11, where no permission is needed, the desktop shows a busy
/// pointer until it hears that the token has arrived. A token that is too long or not printable
/// ASCII is dropped.
void takeActivationToken(const QByteArray& token);

/// The same for the token with which the program was started. Call it once the toolkit is running.
void takeActivationTokenOfStart();

} // namespace stemvault::application

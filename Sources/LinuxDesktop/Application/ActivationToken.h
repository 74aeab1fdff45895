#pragma once

class QByteArray;

namespace stemvault {

/// Takes what a desktop gives out with a click. On Wayland it is the right to bring a window to the
/// front: the toolkit finds it in the environment, and uses it up with the next window that it
/// activates. On X11, where no such right is needed, the desktop shows a busy pointer until it
/// hears that the token has arrived. A token that is too long or not printable ASCII is dropped.
void takeActivationToken(const QByteArray& token);

/// The same for what the program itself was started with. To be called once the toolkit is up.
void takeActivationTokenOfStart();

} // namespace stemvault

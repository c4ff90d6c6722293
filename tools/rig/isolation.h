#pragma once

namespace rig {

/// Moves the process into a network namespace of its own whose loopback is up, so that fixed ports
/// never clash with another rig or console. Call it before the first thread starts. Returns false,
/// with nothing changed, where the machine does not allow it.
bool enterOwnNetwork();

/// In a network of its own: every IPv4 address is this machine's, to bind and to send to, and
/// nothing leaves it. False when the kernel refuses. Any thread.
bool ownEveryAddress();

}  // namespace rig

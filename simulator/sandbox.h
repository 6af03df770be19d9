// The place of a headend on this machine: the loopback port and the catalogue folder that the
// console knows, given to one process and its children without disturbing anything else.

#pragma once

namespace lineup {

/// Where the console looks for the controller and for its catalogue.
inline constexpr int kHeadendPort = 9190;
inline constexpr const char* kCatalogueFolder = "/etc/korvel/conf/ControllerTask";
inline constexpr const char* kCataloguePath =
    "/etc/korvel/conf/ControllerTask/ControllerTask.sqlite";

/// The environment variable that chooses the way. Unset or empty: namespaces where the kernel
/// allows them, the machine's own port and folder elsewhere. "shared": the machine's own, always.
/// "inside": set by `enterSandbox` itself, so that a process started in a sandbox stays in it.
inline constexpr const char* kSandboxVariable = "HEADEND_SANDBOX";

/// Gives this process, and all that it starts from now on, a headend's place for itself: port
/// `kHeadendPort` of 127.0.0.1 is free, and `kCatalogueFolder` exists, is empty and can be written
/// to.
///
/// With namespaces the loopback and /etc are the process's own; sandboxes run side by side, as root
/// and as any other user, and vanish with their last process. Without them, root takes the
/// machine's real port and folder: one process at a time, the next one waits here; what this made
/// in /etc, and what was written into it, is removed when the process ends, however it ends.
///
/// Call it while the process has one thread. Does nothing in a process that is already inside.
/// Throws `std::runtime_error` (its text says what to do) when the place cannot be had: neither
/// namespaces nor root, the port in use, a catalogue that is already there. Nothing has changed
/// then.
void enterSandbox();

}  // namespace lineup

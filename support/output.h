// How the console prints.

#pragma once

namespace lineup {

/// From now on everything printed to standard output and standard error, by streams and by stdio,
/// is written whole: where a descriptor takes no more for now, a non-blocking one as well, it is
/// waited for. Output errors are ignored: what cannot be written (a full disk, nobody reads) is
/// lost, and what is printed later is tried all the same. Once the end is overdue
/// (support/ending_signals.h) nothing is waited for any more. An interrupt of a command drops the
/// rest of the text that is being written when it comes.
///
/// fileno() of `stdout` and `stderr` fails then; libraries that need the descriptors must be given
/// them. To be called once, before anything is printed.
void keepPrinting();

}  // namespace lineup

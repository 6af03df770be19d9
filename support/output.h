// How the console prints.

#pragma once

namespace lineup {

/// From now on everything printed to standard output and standard error, by streams and by stdio,
/// gets away whole however it is taken: a descriptor that takes no more for now is waited for, a
/// non-blocking one as well. What cannot be written (a full disk, nobody reads) is lost, and
/// nothing remembers that: what is printed later is tried as if nothing had happened. Once the end
/// is overdue (support/ending_signals.h) nothing is waited for any more. An interrupt of a command
/// drops the rest of the text that is being written when it comes.
///
/// `stdout` and `stderr` have no file number then; libraries that ask for it must be told. To be
/// called once, before anything is printed.
void keepPrinting();

}  // namespace lineup

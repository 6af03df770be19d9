// Editing a line on a terminal: moving in it, earlier lines, completion.

#pragma once

#include <string>

#include "terminal/line_input.h"

namespace lineup {

enum class Edited { Line, Dropped, End };

/// Whether standard input and output are a terminal on which lines can be edited. The same at every
/// call.
bool canEditLines();

/// Reads a line after `prompt`, edited by the person at the terminal; any of `aids` may be empty.
/// `line` is empty unless the result is Line. Throws EndedBySignal as readCommandLine() does,
/// except that SIGINT drops the line. Between two calls the terminal is in the mode in which it was
/// found, and what was typed ahead is kept. Only where canEditLines().
Edited editLine(const std::string& prompt, const LineAids& aids, std::string& line);

/// Adds `line` to the lines that can be found again, in later consoles too, unless it is empty or
/// the same as the last one.
void rememberLine(const std::string& line);

}  // namespace lineup

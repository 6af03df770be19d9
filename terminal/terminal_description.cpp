#include "terminal/terminal_description.h"

#include <histedit.h>

#include <algorithm>
#include <cstddef>
#include <string>

namespace lineup {

namespace {

/// The string for the terminal's ability of this termcap name, without the pauses ("$<5>") that
/// hardware terminals needed.
std::string ability(EditLine* lib, const char* name) {
  char* value = nullptr;
  if (el_get(lib, EL_GETTC, name, &value) != 0 || value == nullptr) {
    return "";
  }
  std::string text = value;
  for (std::size_t begin = text.find("$<"); begin != std::string::npos; begin = text.find("$<")) {
    const std::size_t end = std::min(text.find('>', begin), text.size() - 1);
    text.erase(begin, end + 1 - begin);
  }
  return text;
}

bool can(EditLine* lib, const char* name) {
  return ability(lib, name) == "yes";
}

std::size_t number(EditLine* lib, const char* name) {
  int value = 0;
  el_get(lib, EL_GETTC, name, &value);
  return static_cast<std::size_t>(std::max(value, 1));
}

}  // namespace

std::optional<TerminalDescription> describeTerminal(EditLine* lib, bool known) {
  TerminalDescription terminal;
  if (!known) {
    return terminal;
  }
  // "am" wraps at the last column; without "xn", as soon as that column is written.
  const bool wrapsAtOnce = can(lib, "am") && !can(lib, "xn");
  terminal.abilities = {ability(lib, "up"), ability(lib, "ce"), ability(lib, "cd"),
                        ability(lib, "cl"), can(lib, "am") && !wrapsAtOnce};
  if (terminal.abilities.up.empty() || terminal.abilities.eraseToEndOfLine.empty()) {
    return {};
  }
  terminal.usualSize = {number(lib, "li"), number(lib, "co")};
  terminal.sparesLastColumn = wrapsAtOnce;
  // Which terminals do it is written nowhere; those of ECMA-48 leave out what they do not know.
  terminal.canMarkPastes = terminal.abilities.eraseToEndOfLine.starts_with("\x1b[");
  return terminal;
}

}  // namespace lineup

#include "terminal/line_display.h"

#include <algorithm>
#include <cstddef>

#include "support/words.h"
#include "terminal/column_list.h"

namespace lineup {

void LineDisplay::start(const TerminalDescription& terminal) {
  terminal_ = terminal;
  screen_ = LineScreen(terminal.abilities);
}

void LineDisplay::begin() {
  screen_.begin(size().rows, size().columns);
}

void LineDisplay::draw() {
  put(screen_.show(prompt_ + line_.text(), prompt_.size() + line_.cursor(), note_));
}

void LineDisplay::leave(const std::string& mark) {
  draw();
  put(mark);
  put(screen_.leave());
}

void LineDisplay::leaveEntered() {
  std::wstring line = line_.text();
  if (!line.empty() && line.back() == L'\n') {
    line.pop_back();
  }
  put(screen_.show(prompt_ + line, prompt_.size() + line.size()));
  put(screen_.leave());
}

void LineDisplay::resize() {
  put(screen_.resize(size().rows, size().columns));
  draw();
}

void LineDisplay::list(const std::vector<std::string>& items) {
  constexpr std::size_t kLeastLines = 5;
  const std::size_t height = std::max(kLeastLines + 2, screen_.rows()) - 2;
  const std::size_t width = std::max<std::size_t>(screen_.columns(), 2) - 1;
  leave();
  put(listInColumns(items, width, height));
}

bool LineDisplay::hasRoomFor(const std::string& text) const {
  const TerminalSize screen = size();
  std::size_t rows = rowsOf(prompt_ + line_.text() + L' ', screen.columns);  // and the cursor
  for (const std::string& line : splitWords(text, '\n')) {
    rows += rowsOf(charactersOf(line), screen.columns);
  }
  return rows <= screen.rows;
}

void LineDisplay::markPastes(bool on) {
  if (terminal_.canMarkPastes && on != marksPastes_) {
    marksPastes_ = on;
    put(on ? "\x1b[?2004h" : "\x1b[?2004l");
  }
}

TerminalSize LineDisplay::size() const {
  TerminalSize size = terminalSize(terminal_.usualSize);
  size.columns -= terminal_.sparesLastColumn && size.columns > 1 ? 1 : 0;
  return size;
}

}  // namespace lineup

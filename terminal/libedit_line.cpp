#include "terminal/libedit_line.h"

#include <histedit.h>
#include <unistd.h>

#include <algorithm>

#include "terminal/terminal_keys.h"
#include "terminal/terminal_mode.h"

namespace lineup {

namespace {

/// What libedit does with `key`.
const wchar_t* functionOf(wchar_t key) {
  if (key == key::kEndOfInput) {
    return L"em-delete-or-list";
  }
  if (key == key::kReturn || key == key::kLineFeed) {
    return L"ed-newline";
  }
  return key::isLetter(key) ? L"ed-insert" : L"ed-unassigned";
}

}  // namespace

std::optional<TerminalDescription> LibeditLine::start(const char* terminal) {
  std::FILE* const nowhere = std::fopen("/dev/null", "w+e");
  auto description = nowhere == nullptr ? std::nullopt : startOn(terminal, nowhere);
  if (!description) {
    return {};
  }
  el_set(lib_, EL_CLIENTDATA, this);
  el_set(
      lib_, EL_PROMPT, +[](EditLine* /*lib*/) {
        static char none[] = "";
        return none;
      });
  bindKeys();
  makeRoom(1);
  if (!edits()) {
    return {};
  }
  el_set(
      lib_, EL_GETCFN, +[](EditLine* lib, wchar_t* key) {
        void* line = nullptr;
        el_get(lib, EL_CLIENTDATA, &line);
        return static_cast<LibeditLine*>(line)->readKey_(*key);
      });
  return description;
}

/// Starts libedit on the terminal, learns from it what the terminal can do, and takes the terminal
/// away from it: libedit takes it to be in its mode from now on, and sees no size of it.
std::optional<TerminalDescription> LibeditLine::startOn(const char* terminal, std::FILE* nowhere) {
  const TerminalSizeBounded bounded;
  TerminalMode mode;
  mode.keep();
  lib_ = el_init_fd("lineup-console", stdin, nowhere, nowhere, STDIN_FILENO, STDOUT_FILENO,
                    fileno(nowhere));
  std::optional<TerminalDescription> description;
  if (lib_ != nullptr) {
    description = describeTerminal(lib_, el_set(lib_, EL_TERMINAL, terminal) == 0);
  }
  if (description) {
    el_set(lib_, EL_PREP_TERM, 1);
    el_set(lib_, EL_SETFP, 0, nowhere);
  }
  mode.restore();
  return description;
}

void LibeditLine::bindKeys() {
  el_wset(lib_, EL_EDITOR, L"emacs");
  for (wchar_t key = 1; key < key::kFirstLetterBeyondAscii; ++key) {
    const wchar_t keys[] = {L'\\', static_cast<wchar_t>(L'0' + key / 64),
                            static_cast<wchar_t>(L'0' + key / 8 % 8),
                            static_cast<wchar_t>(L'0' + key % 8), L'\0'};
    el_wset(lib_, EL_BIND, keys, functionOf(key), nullptr);
  }
}

/// Whether libedit edits, tried with a line of keys. Where the terminal failed when libedit looked
/// at it, libedit does not say so: it reads no line, or takes every key for a letter.
bool LibeditLine::edits() {
  el_set(
      lib_, EL_GETCFN, +[](EditLine* /*lib*/, wchar_t* key) {
        static const wchar_t* next = L"\x01\n";  // to the beginning, Return
        if (*next == L'\0') {
          return 0;
        }
        *key = *next++;
        return 1;
      });
  const char* const line = read();
  return line != nullptr && *line == '\n';
}

const char* LibeditLine::read() {
  int length = 0;
  return el_gets(lib_, &length);
}

std::wstring LibeditLine::text() const {
  const LineInfoW* const line = el_wline(lib_);
  return {line->buffer, line->lastchar};
}

std::size_t LibeditLine::length() const {
  const LineInfoW* const line = el_wline(lib_);
  return static_cast<std::size_t>(line->lastchar - line->buffer);
}

std::size_t LibeditLine::cursor() const {
  const LineInfoW* const line = el_wline(lib_);
  return static_cast<std::size_t>(line->cursor - line->buffer);
}

void LibeditLine::insert(const std::wstring& text) {
  makeRoom(longest_ + length() + text.size());
  el_winsertstr(lib_, text.c_str());
}

void LibeditLine::replace(const EditedLine& line) {
  makeRoom(longest_ + line.text.size());
  if (line.text.empty()) {
    moveTo(length());
    eraseBefore(length());
  } else {
    el_wreplacestr(lib_, line.text.c_str());
    moveTo(line.cursor);
  }
}

void LibeditLine::moveTo(std::size_t place) {
  el_cursor(lib_, static_cast<int>(place) - static_cast<int>(cursor()));
}

void LibeditLine::eraseBefore(std::size_t count) {
  el_deletestr(lib_, static_cast<int>(count));
}

void LibeditLine::refresh() {
  el_set(lib_, EL_REFRESH);
}

void LibeditLine::makeRoomForKey() {
  makeRoom(longest_ + length() + 1);
}

/// Makes libedit's screen large enough for `letters` more than it has room for now, and what one
/// key may add to them.
void LibeditLine::makeRoom(std::size_t letters) {
  longest_ = std::max(longest_, length());
  if (letters <= room_) {
    return;
  }
  constexpr std::size_t kColumns = 256;
  constexpr std::size_t kWidestLetter = 8;  // as libedit spells one that it cannot print
  constexpr std::size_t kLeast = 1024;
  room_ = std::max(kLeast, 2 * letters);
  const std::size_t rows = room_ * kWidestLetter / (kColumns - kWidestLetter) + 2;
  el_set(lib_, EL_SETTC, "co", std::to_string(kColumns).c_str(), nullptr);
  el_set(lib_, EL_SETTC, "li", std::to_string(rows).c_str(), nullptr);
  refresh();
}

}  // namespace lineup

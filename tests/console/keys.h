// What the keys of a terminal send.

#pragma once

#include <string>

namespace lineup::test {

inline const std::string kUp = "\x1b[A";
inline const std::string kDown = "\x1b[B";
inline const std::string kRight = "\x1b[C";
inline const std::string kLeft = "\x1b[D";
inline const std::string kHome = "\x1b[H";
inline const std::string kEnd = "\x1b[F";
inline const std::string kDelete = "\x1b[3~";
inline const std::string kF2 = "\x1bOQ";
inline const std::string kF3 = "\x1bOR";
inline const std::string kPasteBegins = "\x1b[200~";
inline const std::string kPasteEnds = "\x1b[201~";
// With which the console asks the terminal to mark what is pasted, or no longer.
inline const std::string kMarksOn = "\x1b[?2004h";
inline const std::string kMarksOff = "\x1b[?2004l";
inline const std::string kCtrlLeft = "\x1b[1;5D";
inline const std::string kCtrlRight = "\x1b[1;5C";
inline const std::string kEraseWordBefore = "\x1b\x7f";  // Alt and Backspace
inline const std::string kEraseWord =
    "\x1b"
    "d";
inline const std::string kBackspace = "\x7f";
inline const std::string kCtrlA = "\x01";
inline const std::string kCtrlC = "\x03";
inline const std::string kCtrlD = "\x04";
inline const std::string kCtrlE = "\x05";
inline const std::string kCtrlG = "\x07";
inline const std::string kCtrlK = "\x0b";
inline const std::string kCtrlL = "\x0c";
inline const std::string kCtrlR = "\x12";
inline const std::string kCtrlS = "\x13";
inline const std::string kCtrlT = "\x14";
inline const std::string kCtrlU = "\x15";
inline const std::string kCtrlW = "\x17";
inline const std::string kCtrlY = "\x19";
inline const std::string kCtrlZ = "\x1a";
inline const std::string kCtrlUnderscore = "\x1f";
inline const std::string kCtrlBackslash = "\x1c";

}  // namespace lineup::test

// What the keys of a terminal send.

#pragma once

namespace lineup::test {

inline constexpr char kUp[] = "\x1b[A";
inline constexpr char kDown[] = "\x1b[B";
inline constexpr char kRight[] = "\x1b[C";
inline constexpr char kLeft[] = "\x1b[D";
inline constexpr char kHome[] = "\x1b[H";
inline constexpr char kEnd[] = "\x1b[F";
inline constexpr char kDelete[] = "\x1b[3~";
inline constexpr char kPageUp[] = "\x1b[5~";
inline constexpr char kF2[] = "\x1bOQ";
inline constexpr char kF3[] = "\x1bOR";
inline constexpr char kPasteBegins[] = "\x1b[200~";
inline constexpr char kPasteEnds[] = "\x1b[201~";
// With which the console asks the terminal to mark what is pasted, or no longer.
inline constexpr char kMarksOn[] = "\x1b[?2004h";
inline constexpr char kMarksOff[] = "\x1b[?2004l";
inline constexpr char kCtrlLeft[] = "\x1b[1;5D";
inline constexpr char kCtrlRight[] = "\x1b[1;5C";
inline constexpr char kBackspace[] = "\x7f";
inline constexpr char kCtrlC[] = "\x03";
inline constexpr char kCtrlD[] = "\x04";
inline constexpr char kCtrlG[] = "\x07";
inline constexpr char kCtrlK[] = "\x0b";
inline constexpr char kCtrlL[] = "\x0c";
inline constexpr char kCtrlR[] = "\x12";
inline constexpr char kCtrlS[] = "\x13";
inline constexpr char kCtrlT[] = "\x14";
inline constexpr char kCtrlU[] = "\x15";
inline constexpr char kCtrlW[] = "\x17";
inline constexpr char kCtrlY[] = "\x19";
inline constexpr char kCtrlZ[] = "\x1a";
inline constexpr char kCtrlBackslash[] = "\x1c";

}  // namespace lineup::test

// The keys of a terminal: which one a sequence of bytes stands for.

#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace lineup {

/// What is read from the keyboard: a letter, or one of these. Cursor keys and their like are the
/// control characters that do the same; those without one have codes of their own, beyond ASCII,
/// which no letter has.
namespace key {

consteval wchar_t control(char letter) {
  return static_cast<wchar_t>(letter & 0x1f);
}

constexpr wchar_t kBeginning = control('A');
constexpr wchar_t kLeft = control('B');
constexpr wchar_t kEndOfInput = control('D');  ///< or deletes the letter at the cursor
constexpr wchar_t kEnd = control('E');
constexpr wchar_t kRight = control('F');
constexpr wchar_t kGiveUp = control('G');
constexpr wchar_t kBackspace = control('H');
constexpr wchar_t kTab = control('I');
constexpr wchar_t kLineFeed = control('J');
constexpr wchar_t kEraseToEnd = control('K');
constexpr wchar_t kClearScreen = control('L');
constexpr wchar_t kReturn = control('M');
constexpr wchar_t kDown = control('N');
constexpr wchar_t kUp = control('P');
constexpr wchar_t kSearch = control('R');
constexpr wchar_t kTranspose = control('T');
constexpr wchar_t kEraseToBeginning = control('U');
constexpr wchar_t kEraseToBlank = control('W');
constexpr wchar_t kYank = control('Y');
constexpr wchar_t kEscape = 0x1b;
constexpr wchar_t kUndo = 0x1f;  ///< Ctrl-_
constexpr wchar_t kRubout = 0x7f;
constexpr wchar_t kDelete = 0x80;
constexpr wchar_t kWordLeft = 0x81;
constexpr wchar_t kWordRight = 0x82;
constexpr wchar_t kEraseWord = 0x83;
constexpr wchar_t kEraseWordBefore = 0x84;
constexpr wchar_t kF2 = 0x85;
constexpr wchar_t kF3 = 0x86;
constexpr wchar_t kPasteBegins = 0x87;  ///< where the terminal brackets what is pasted
constexpr wchar_t kPasteEnds = 0x88;

constexpr wchar_t kFirstLetterBeyondAscii = 0xa0;  ///< after the control characters of Latin 1

/// Whether `code` is a letter, to be inserted, and none of the above.
bool isLetter(wchar_t code);

}  // namespace key

/// Reads keys from bytes, letters in the encoding of the locale. Bytes that make no letter are left
/// out. An escape sequence that stands for none of the keys above is left out, whole, and so is
/// what a terminal sends as an answer.
class KeyReader {
 public:
  /// `readByte` waits for the next byte, and returns false at the end; it may throw. `follows` says
  /// whether one comes within that time.
  KeyReader(std::function<bool(char&)> readByte,
            std::function<bool(std::chrono::milliseconds)> follows)
      : readByte_(std::move(readByte)), follows_(std::move(follows)) {}

  /// Waits for the next key; false at the end. The escape key is one if `escapeAlone`, when nothing
  /// has followed it for half a second; else it waits for what belongs to it.
  bool read(wchar_t& key, bool escapeAlone = false);

 private:
  std::optional<wchar_t> readKey(bool escapeAlone);
  bool readCharacter(wchar_t& character);
  bool readSequence(std::wstring& sequence);
  bool readSequence(wchar_t first, std::wstring& sequence);
  bool readRest(wchar_t first, wchar_t last, std::wstring& sequence);
  bool readString();
  bool follows(std::chrono::milliseconds time) const;

  std::function<bool(char&)> readByte_;
  std::function<bool(std::chrono::milliseconds)> follows_;
  std::wstring next_{};  ///< what cut a sequence short
  bool ended_ = false;
};

}  // namespace lineup

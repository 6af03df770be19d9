#include "terminal/terminal_keys.h"

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <cwctype>
#include <iterator>
#include <string_view>

#include "support/utf8.h"

namespace lineup {

namespace {

using std::chrono::milliseconds;

/// What the terminals send after the escape character.
struct Sequence {
  std::wstring_view bytes;
  wchar_t key;
};
constexpr Sequence kSequences[] = {
    {L"[A", key::kUp},
    {L"OA", key::kUp},
    {L"[B", key::kDown},
    {L"OB", key::kDown},
    {L"[C", key::kRight},
    {L"OC", key::kRight},
    {L"[D", key::kLeft},
    {L"OD", key::kLeft},
    {L"[H", key::kBeginning},
    {L"OH", key::kBeginning},
    {L"[1~", key::kBeginning},
    {L"[7~", key::kBeginning},
    {L"[F", key::kEnd},
    {L"OF", key::kEnd},
    {L"[4~", key::kEnd},
    {L"[8~", key::kEnd},
    {L"[3~", key::kDelete},
    {L"[1;5C", key::kWordRight},  // with Ctrl
    {L"[1;3C", key::kWordRight},  // with Alt
    {L"Oc", key::kWordRight},     // with Ctrl, in rxvt
    {L"[1;5D", key::kWordLeft},
    {L"[1;3D", key::kWordLeft},
    {L"Od", key::kWordLeft},
    {L"OQ", key::kF2},
    {L"[12~", key::kF2},
    {L"[[B", key::kF2},  // on a Linux console
    {L"OR", key::kF3},
    {L"[13~", key::kF3},
    {L"[[C", key::kF3},
    {L"[200~", key::kPasteBegins},
    {L"[201~", key::kPasteEnds},
    {L"f", key::kWordRight},  // Alt and a letter
    {L"b", key::kWordLeft},
    {L"d", key::kEraseWord},
    {L"\x7f", key::kEraseWordBefore},
    {L"\b", key::kEraseWordBefore},
};

using key::kFirstLetterBeyondAscii;

// Control characters of the second set, each of which stands for an escape character and one more.
constexpr wchar_t kToOneByte = 0x40;           // from that second character
constexpr wchar_t kSequenceInOneByte = 0x9b;   // CSI, for "ESC ["
constexpr wchar_t kStringEndInOneByte = 0x9c;  // ST

// Keys that a person presses come further apart, the bytes of one sequence closer together.
constexpr milliseconds kSequenceGoesOn(500);
constexpr milliseconds kStringBegins(50);

/// rxvt ends the sequences of keys with Shift by '$', which is followed by more in others.
bool isOfRxvtWithShift(const std::wstring& sequence) {
  const std::size_t numberEnd = sequence.find_first_not_of(L"0123456789", 1);
  return sequence[0] == L'[' && numberEnd > 1 && numberEnd + 1 == sequence.size() &&
         sequence.back() == L'$';
}

}  // namespace

bool key::isLetter(wchar_t code) {
  return (code >= L' ' && code < kRubout) || code >= kFirstLetterBeyondAscii;
}

bool KeyReader::read(wchar_t& key, bool escapeAlone) {
  while (!ended_) {
    const std::optional<wchar_t> read = readKey(escapeAlone);
    if (read) {
      key = *read;
      return true;
    }
  }
  return false;
}

/// Nothing where the sequence that was read is not a key.
std::optional<wchar_t> KeyReader::readKey(bool escapeAlone) {
  wchar_t character = 0;
  if (!readCharacter(character)) {
    return {};
  }
  const bool isOneByteSequence = character > key::kRubout && character < kFirstLetterBeyondAscii;
  if (character != key::kEscape && !isOneByteSequence) {
    return character;
  }
  if (escapeAlone && character == key::kEscape && !follows(kSequenceGoesOn)) {
    return key::kEscape;
  }
  std::wstring sequence;
  const bool isWhole =
      isOneByteSequence ? readSequence(character - kToOneByte, sequence) : readSequence(sequence);
  if (!isWhole) {
    return {};
  }
  const auto* const known =
      std::find_if(std::begin(kSequences), std::end(kSequences),
                   [&](const Sequence& candidate) { return candidate.bytes == sequence; });
  return known == std::end(kSequences) ? std::nullopt : std::optional(known->key);
}

bool KeyReader::readCharacter(wchar_t& character) {
  if (!next_.empty()) {
    character = next_.front();
    next_.erase(0, 1);
    return true;
  }
  std::mbstate_t state{};
  char byte = 0;
  while (readByte_(byte)) {
    const bool begun = std::mbsinit(&state) == 0;
    std::size_t result = std::mbrtowc(&character, &byte, 1, &state);
    if (result == static_cast<std::size_t>(-1) && begun) {
      state = {};  // the letter broke off; the byte may begin the next one
      result = std::mbrtowc(&character, &byte, 1, &state);
    }
    if (result == static_cast<std::size_t>(-1)) {
      state = {};
      if (static_cast<unsigned char>(byte) == kSequenceInOneByte) {
        character = kSequenceInOneByte;
        return true;
      }
    } else if (result != static_cast<std::size_t>(-2) && character <= kLastCodePoint) {
      return true;
    }
  }
  ended_ = true;
  return false;
}

/// Reads what belongs to the escape character before it.
bool KeyReader::readSequence(std::wstring& sequence) {
  wchar_t character = 0;
  do {  // Alt adds an escape character of its own
    if (!readCharacter(character)) {
      return false;
    }
  } while (character == key::kEscape);
  if (character < L' ' && character != key::kBackspace) {
    next_ = character;
    return false;
  }
  return readSequence(character, sequence);
}

/// Reads the rest of the sequence that begins with `first`.
bool KeyReader::readSequence(wchar_t first, std::wstring& sequence) {
  sequence = first;
  switch (first) {
    case L'[':
      return readRest(L' ', L'?', sequence);  // parameters, and the letter that ends them
    case L'O':
      return readRest(L'0', L';', sequence);
    case L']':  // OSC, DCS, SOS, PM and APC, unless it is a key with Alt
    case L'P':
    case L'X':
    case L'^':
    case L'_':
      return !follows(kStringBegins) || readString();
    default:
      return true;
  }
}

/// Reads characters from `first` to `last`, and the one after them, which ends the sequence.
bool KeyReader::readRest(wchar_t first, wchar_t last, std::wstring& sequence) {
  constexpr std::size_t kLongest = 8;  // of those that are known
  wchar_t character = 0;
  do {
    if (!readCharacter(character)) {
      return false;
    }
    if (character < L' ' || character > L'~') {
      next_ = character;
      return false;
    }
    if (sequence.size() < kLongest) {
      sequence += character;
    }
  } while (((character >= first && character <= last) || sequence == L"[[") &&
           !isOfRxvtWithShift(sequence));
  return true;
}

/// Reads up to the end of a control string, which is BEL or ST. Any other control character, or
/// sequence, cuts it short.
bool KeyReader::readString() {
  constexpr wchar_t kBell = 0x07;
  wchar_t character = 0;
  do {
    if (!readCharacter(character)) {
      return false;
    }
    if (character == kBell || character == kStringEndInOneByte) {
      return true;
    }
  } while (character >= L' ');
  wchar_t second = 0;
  if (character == key::kEscape && readCharacter(second)) {
    if (second == L'\\') {
      return true;
    }
    next_ = second;
  }
  next_.insert(next_.begin(), character);
  return false;
}

bool KeyReader::follows(milliseconds time) const {
  return !next_.empty() || follows_(time);
}

}  // namespace lineup

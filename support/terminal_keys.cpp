#include "support/terminal_keys.h"

#include <algorithm>
#include <cwchar>
#include <cwctype>
#include <iterator>
#include <string_view>

namespace lineup {

namespace {

/// What the terminals send behind the escape character.
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
    {L"f", key::kWordRight},  // Alt and a letter
    {L"b", key::kWordLeft},
    {L"d", key::kEraseWord},
    {L"\x7f", key::kEraseWordBefore},
    {L"\b", key::kEraseWordBefore},
};

}  // namespace

bool key::isLetter(wchar_t code) {
  return (code >= L' ' && code < kRubout) || code >= kFirstLetterBeyondAscii;
}

bool KeyReader::read(wchar_t& key) {
  while (!ended_) {
    const std::optional<wchar_t> read = readKey();
    if (read) {
      key = *read;
      return true;
    }
  }
  return false;
}

/// Nothing where the sequence that was read is no key.
std::optional<wchar_t> KeyReader::readKey() {
  wchar_t character = 0;
  if (!readCharacter(character)) {
    return {};
  }
  if (character == key::kEscape) {
    std::wstring sequence;
    if (!readSequence(sequence)) {
      return {};
    }
    const auto* const known =
        std::find_if(std::begin(kSequences), std::end(kSequences),
                     [&](const Sequence& candidate) { return candidate.bytes == sequence; });
    return known == std::end(kSequences) ? std::nullopt : std::optional(known->key);
  }
  const bool ours = character >= key::kRubout + 1 && character < key::kFirstLetterBeyondAscii;
  return ours ? std::nullopt : std::optional(character);
}

bool KeyReader::readCharacter(wchar_t& character) {
  if (next_) {
    character = *next_;
    next_.reset();
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
    } else if (result != static_cast<std::size_t>(-2)) {
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
  sequence = character;
  switch (character) {
    case L'[':
      return readRest(L' ', L'?', sequence);  // parameters, and the letter that ends them
    case L'O':
      return readRest(L'0', L';', sequence);
    default:
      return true;
  }
}

/// Reads characters from `first` to `last`, and the one behind them, which ends the sequence.
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
  } while ((character >= first && character <= last) || sequence == L"[[");
  return true;
}

}  // namespace lineup

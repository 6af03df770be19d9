// Splitting a command line into words, and reading them.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The pieces of `text` between delimiters. Two delimiters in a row have an empty word between them
/// and a leading one has an empty word before it; a trailing one adds nothing, and an empty text
/// has no words.
std::vector<std::string> splitWords(const std::string& text, char delimiter);

/// The number that `word` begins with, as strtol reads it in base 10: leading white space and a
/// sign are accepted, trailing junk is ignored, no number is 0. A number beyond 32 bits is the
/// nearest one within them, as on a 32-bit board.
int32_t readNumber(const std::string& word);

/// Whether `text` can be a word or a part of one: it has neither blanks nor control characters.
bool isOneWord(std::string_view text);

/// Turns `text` into upper case in place, byte by byte: bytes beyond ASCII stay as they are.
void upperCase(std::string& text);

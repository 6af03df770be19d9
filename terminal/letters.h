// The letters of a text, as the lines that are edited have them.

#pragma once

#include <string>

namespace lineup {

// Both in the encoding of the locale.

/// The letters of `text`; bytes that make none are left out.
std::wstring lettersOf(const std::string& text);

/// The bytes of `letters`; a letter that has none is left out.
std::string bytesOf(const std::wstring& letters);

}  // namespace lineup

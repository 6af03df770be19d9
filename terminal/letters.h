// The characters of a text, as the lines that are edited have them.

#pragma once

#include <string>

namespace lineup {

// Both in the encoding of the locale.

/// The characters of `text`; bytes that make none are left out.
std::wstring charactersOf(const std::string& text);

/// The bytes of `characters`; one that has none is left out.
std::string bytesOf(const std::wstring& characters);

}  // namespace lineup

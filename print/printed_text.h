// Texts of records, made fit for a terminal or a file of lines.

#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace lineup {

/// Whether `text` is printable ASCII without the backslash and without `alsoExcluded`: as it is, it
/// needs no escape.
bool isPlain(std::string_view text, char alsoExcluded);

/// `text` as one line that does nothing to a terminal: control characters, the separators of lines
/// and paragraphs (U+2028, U+2029), and bytes that are not UTF-8, become escapes (\n, \t, \x1b),
/// and so does the backslash.
std::string printable(std::string_view text);

/// The same for a message that may hold such escapes already: the backslash stays as it is.
std::string inOneLine(std::string_view text);

/// Makes `text` what printable() returns; returns how many columns of a terminal it takes.
std::size_t makePrintable(std::string& text);

/// What printable() returns between quotation marks, with those inside escaped.
std::string inQuotes(std::string_view text);

/// `value` on one line: a text quoted, anything else as JSON.
std::string printedValue(const nlohmann::json& value);

}  // namespace lineup

#include "print/printed_text.h"

#include <algorithm>

#include "support/utf8.h"

namespace lineup {

namespace {

void escape(std::string& out, std::string_view bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  for (const char character : bytes) {
    const auto byte = static_cast<unsigned char>(character);
    switch (character) {
      case '\n':
        out += "\\n";
        break;
      case '\t':
        out += "\\t";
        break;
      default:
        out += "\\x";
        out += kDigits[byte >> 4U];
        out += kDigits[byte & 0xfU];
    }
  }
}

/// Whether programs that split a text into lines may do so at this character.
bool endsLine(std::string_view character) {
  return character == "\u2028" || character == "\u2029";
}

/// `text` with what is not for a terminal escaped, and a backslash before each character that is
/// one of `quoted`.
std::string escaped(std::string_view text, std::string_view quoted) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = characterLength(text);
    const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
    if (length == 0 || isControl(character) || endsLine(character)) {
      escape(out, character);
    } else {
      if (quoted.find(character) != std::string_view::npos) {
        out += '\\';
      }
      out += character;
    }
    text.remove_prefix(character.size());
  }
  return out;
}

}  // namespace

bool isPlain(std::string_view text, char alsoExcluded) {
  return std::all_of(text.begin(), text.end(), [&](char character) {
    return character >= ' ' && character < '\x7f' && character != '\\' && character != alsoExcluded;
  });
}

std::string printable(std::string_view text) {
  return isPlain(text, '\\') ? std::string(text) : escaped(text, "\\");
}

std::string inOneLine(std::string_view text) {
  return escaped(text, "");
}

std::size_t makePrintable(std::string& text) {
  if (isPlain(text, '\\')) {
    return text.size();
  }
  text = printable(text);
  return columnsOf(text);
}

std::string inQuotes(std::string_view text) {
  return '"' + (isPlain(text, '"') ? std::string(text) : escaped(text, "\\\"")) + '"';
}

std::string printedValue(const nlohmann::json& value) {
  if (value.is_string()) {
    return inQuotes(value.get_ref<const std::string&>());
  }
  if (value.is_primitive()) {
    return value.dump();
  }
  std::string text;
  for (const auto& [name, member] : value.items()) {
    text += text.empty() ? "" : ", ";
    text += (value.is_object() ? inQuotes(name) + ": " : "") + printedValue(member);
  }
  return value.is_object() ? "{" + text + "}" : "[" + text + "]";
}

}  // namespace lineup

#include "compare/printed_text.h"

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

std::string escaped(std::string_view text, char alsoEscaped) {
  if (isPlain(text, alsoEscaped)) {
    return std::string(text);
  }
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = characterLength(text);
    const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
    if (length == 0 || isControl(character)) {
      escape(out, character);
    } else {
      if (character[0] == '\\' || character[0] == alsoEscaped) {
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
  return escaped(text, '\\');
}

std::size_t makePrintable(std::string& text) {
  if (isPlain(text, '\\')) {
    return text.size();
  }
  text = printable(text);
  return charactersOf(text);
}

std::string inQuotes(std::string_view text) {
  return '"' + escaped(text, '"') + '"';
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

std::size_t charactersOf(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xc0U) != 0x80U;
  }));
}

}  // namespace lineup

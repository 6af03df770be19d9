#include "catalogue/word_search.h"

#include <sqlite3.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cwchar>
#include <cwctype>
#include <iterator>
#include <map>
#include <stdexcept>

#include "catalogue/connection.h"
#include "catalogue/tables.h"
#include "model/headend_places.h"
#include "support/utf8.h"

namespace lineup {

using korveldb::textOf;
using korveldb::tSqlite3db;
using korveldb::tTable;

namespace {

[[noreturn]] void fail(sqlite3* catalogue) {
  throw std::runtime_error(std::string(kCataloguePath) + ": " +
                           (catalogue == nullptr ? "out of memory" : sqlite3_errmsg(catalogue)));
}

wchar_t smallOf(wchar_t letter) {
  return static_cast<wchar_t>(std::towlower(static_cast<wint_t>(letter)));
}

/// `text` in lower case, as the thread's locale has it. Bytes that are no letter of it are kept.
std::string fold(const std::string& text) {
  constexpr auto kNone = static_cast<std::size_t>(-1);
  std::string folded;
  for (std::size_t at = 0; at < text.size();) {
    wchar_t letter = 0;
    std::mbstate_t state{};
    const std::size_t length = std::mbrtowc(&letter, text.data() + at, text.size() - at, &state);
    const bool isLetter = length > 0 && length <= text.size() - at;
    char small[MB_LEN_MAX];
    state = {};
    const std::size_t smallLength = isLetter ? std::wcrtomb(small, smallOf(letter), &state) : kNone;
    if (smallLength == kNone) {
      folded += text[at];
    } else {
      folded.append(small, smallLength);
    }
    at += isLetter ? length : 1;
  }
  return folded;
}

/// Whether the name contains all of the words, which are in lower case.
bool holdsAll(const std::string& name, const std::vector<std::string>& words) {
  const std::string folded = fold(name);
  return std::all_of(words.begin(), words.end(), [&](const std::string& word) {
    return folded.find(word) != std::string::npos;
  });
}

/// The first table of each service id.
using TablesByNumber = std::map<std::string, const char*>;

void search(sqlite3* catalogue, const tTable& table, const std::vector<std::string>& words,
            TablesByNumber& tables, std::vector<FoundService>& found) {
  const int result = korveldb::visitRows(catalogue, table.name, [&](sqlite3_stmt* row) {
    const std::string number = textOf(row, table.id);
    const auto taken = tables.emplace(number, table.input.name).first;
    const std::string name = textOf(row, table.serviceName);
    if (holdsAll(name, words)) {
      const std::string source = textOf(row, table.source);
      found.push_back({number, name, table.input.name,
                       source.empty() ? source : source + table.input.unit, textOf(row, table.sid),
                       taken->second});
    }
  });
  if (result != SQLITE_DONE) {
    fail(catalogue);
  }
}

}  // namespace

std::vector<FoundService> findServicesByWords(const std::vector<std::string>& words) {
  // Read-write, since only then SQLite can roll back the hot journal of a writer that was killed;
  // nothing here writes.
  const tSqlite3db catalogue(kCataloguePath, SQLITE_OPEN_READWRITE);
  sqlite3_exec(catalogue.getHandle(), "PRAGMA busy_timeout = 6000", nullptr, nullptr, nullptr);
  const Utf8Locale utf8;
  std::vector<std::string> folded;
  std::transform(words.begin(), words.end(), std::back_inserter(folded), fold);
  TablesByNumber tables;
  std::vector<FoundService> found;
  for (const tTable* const table : korveldb::kTables) {
    search(catalogue.getHandle(), *table, folded, tables, found);
  }
  return found;
}

}  // namespace lineup

#include "catalogue/word_search.h"

#include <sqlite3.h>

#include <map>
#include <memory>
#include <stdexcept>

#include "catalogue/tables.h"
#include "model/headend_places.h"

namespace lineup {

using korveldb::tTable;

namespace {

struct Finalize {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
struct Close {
  void operator()(sqlite3* connection) const { sqlite3_close(connection); }
};
using Connection = std::unique_ptr<sqlite3, Close>;
using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

/// The unit of a service's source.
const char* unitOf(const tTable& table) {
  if (&table == &korveldb::kIPTable) {
    return "";
  }
  return &table == &korveldb::kSatTable ? " MHz" : " kHz";
}

[[noreturn]] void fail(sqlite3* catalogue) {
  throw std::runtime_error(std::string(kCataloguePath) + ": " +
                           (catalogue == nullptr ? "out of memory" : sqlite3_errmsg(catalogue)));
}

/// Opens the catalogue without making one. For writing, because only so SQLite can take back what a
/// dead writer has left half done; nothing here writes.
Connection openCatalogue() {
  constexpr int kPatienceMs = 6000;
  sqlite3* opened = nullptr;
  const int result = sqlite3_open_v2(kCataloguePath, &opened, SQLITE_OPEN_READWRITE, nullptr);
  Connection catalogue(opened);
  if (result != SQLITE_OK) {
    fail(opened);
  }
  sqlite3_busy_timeout(opened, kPatienceMs);
  return catalogue;
}

/// A pattern of LIKE for texts that hold `word`.
std::string patternFor(const std::string& word) {
  std::string pattern = "%";
  for (const char character : word) {
    if (character == '%' || character == '_' || character == '\\') {
      pattern += '\\';
    }
    pattern += character;
  }
  return pattern + '%';
}

/// Every row of the table; behind its columns, whether the name holds all words.
Statement selectRows(sqlite3* catalogue, const tTable& table,
                     const std::vector<std::string>& words) {
  std::string select = "SELECT *, 1";
  for (std::size_t word = 0; word < words.size(); ++word) {
    select += " AND service_name LIKE ? ESCAPE '\\'";
  }
  select += std::string(" FROM ") + table.name;
  sqlite3_stmt* compiled = nullptr;
  if (sqlite3_prepare_v2(catalogue, select.c_str(), -1, &compiled, nullptr) != SQLITE_OK) {
    fail(catalogue);
  }
  Statement statement(compiled);
  int number = 0;
  for (const std::string& word : words) {
    const std::string pattern = patternFor(word);
    if (sqlite3_bind_text(compiled, ++number, pattern.data(), static_cast<int>(pattern.size()),
                          SQLITE_TRANSIENT) != SQLITE_OK) {
      fail(catalogue);
    }
  }
  return statement;
}

std::string textOf(sqlite3_stmt* row, std::size_t column) {
  const auto* const text =
      reinterpret_cast<const char*>(sqlite3_column_text(row, static_cast<int>(column)));
  return text == nullptr ? std::string() : text;
}

/// The tables by the numbers of their services; of several, the first.
using TablesByNumber = std::map<std::string, const char*>;

void search(sqlite3* catalogue, const tTable& table, const std::vector<std::string>& words,
            TablesByNumber& tables, std::vector<FoundService>& found) {
  const Statement rows = selectRows(catalogue, table, words);
  int result = SQLITE_OK;
  while ((result = sqlite3_step(rows.get())) == SQLITE_ROW) {
    const std::string number = textOf(rows.get(), table.id);
    const auto taken = tables.emplace(number, table.kind).first;
    if (sqlite3_column_int(rows.get(), sqlite3_column_count(rows.get()) - 1) == 1) {
      const std::string source = textOf(rows.get(), table.source);
      found.push_back({number, textOf(rows.get(), table.serviceName), table.kind,
                       source.empty() ? source : source + unitOf(table),
                       textOf(rows.get(), table.sid), taken->second});
    }
  }
  if (result != SQLITE_DONE) {
    fail(catalogue);
  }
}

}  // namespace

std::vector<FoundService> findServicesByWords(const std::vector<std::string>& words) {
  const Connection catalogue = openCatalogue();
  TablesByNumber tables;
  std::vector<FoundService> found;
  for (const tTable* const table : korveldb::kTables) {
    search(catalogue.get(), *table, words, tables, found);
  }
  return found;
}

}  // namespace lineup

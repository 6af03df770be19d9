#include <charconv>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "catalogue/word_search.h"
#include "ctl/commands.h"
#include "ctl/files.h"
#include "print/text_table.h"

namespace lineup::ctl {

namespace {

using nlohmann::json;

std::vector<FoundService> find(const std::vector<std::string>& words) {
  try {
    return findServicesByWords(words);
  } catch (const std::runtime_error& error) {
    throw Failure(kFile, error.what());
  }
}

TextTable tableOf(const std::vector<FoundService>& services) {
  TextTable table{{"number", "name", "kind", "source", "SID", "adddvb"}};
  for (const FoundService& service : services) {
    table.rows.push_back({service.number, service.name, service.input, service.source, service.sid,
                          service.takenFrom});
  }
  return table;
}

/// A number where the cell is a whole one, as its text says it; otherwise the text.
json numberOrText(const std::string& cell) {
  int64_t number = 0;
  std::from_chars(cell.data(), cell.data() + cell.size(), number);
  return std::to_string(number) == cell ? json(number) : json(cell);
}

std::string jsonOf(const std::vector<FoundService>& services) {
  json list = json::array();
  for (const FoundService& service : services) {
    list.push_back({{"number", numberOrText(service.number)},
                    {"name", service.name},
                    {"kind", service.input},
                    {"source", service.source},
                    {"sid", numberOrText(service.sid)},
                    {"adddvb", service.takenFrom}});
  }
  return list.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

}  // namespace

Status catalogue(const Arguments& arguments) {
  const std::string format = arguments.choice("format", kTableFormats);
  const std::vector<FoundService> services = find(arguments.operands());
  if (format == "json") {
    print(jsonOf(services));
  } else if (format == "csv") {
    print(tableCsv(tableOf(services)));
  } else if (!services.empty()) {
    print(tableText(tableOf(services)));
  }
  return kDone;
}

}  // namespace lineup::ctl

// The catalogue's four tables of services that the headend's inputs can receive.

#pragma once

#include <sqlite3.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string_view>

#include "hub_module_types.h"
#include "model/input_types.h"

namespace korveldb {

class tRow;
struct tRowList;

/// All that the console knows of one table. Columns are positions from 0; by their names the finds
/// and look-ups know service_name and service_id alone.
struct tTable {
  const char* name;
  std::string_view columnTypes;  ///< of the columns that are read: I integer, S text
  /// The select of the table's row class (catalogue/select.h).
  std::unique_ptr<tRowList> (*doSelect)(sqlite3* handle, const char* filter, ...);

  lineup::InputType input;

  std::size_t id;  ///< what "adddvb" takes
  std::size_t serviceName;
  std::size_t sid;
  std::size_t flag;
  std::size_t serviceType;
  std::size_t textList;
  std::size_t integerList;

  std::size_t source;  ///< the frequency or the URL, printed between the two texts that follow
  const char* beforeSource;
  const char* afterSource;

  /// Sets the reference to the mux that the service is received from.
  void (*setMux)(korvel::thrift::hub_module::DVBInputService& service, const tRow& row);
};

extern const tTable kSatTable;
extern const tTable kTdtTable;
extern const tTable kCableTable;
extern const tTable kIPTable;

/// In the order in which an id is looked up.
inline constexpr std::array kTables{&kSatTable, &kTdtTable, &kCableTable, &kIPTable};

}  // namespace korveldb

// A record that was read is one that can be written: nothing of it is lost on the way. Only records
// that were read completely are shown, saved and sent: that takes far longer than reading, and one
// that broke off leaves nothing that a short complete one does not.

#pragma once

#include <string>

#include "controller/config_file.h"
#include "hub_module_types.h"
#include "tests/fuzz/require.h"
#include "tests/support/encoding.h"
#include "tests/support/scratch_file.h"

namespace lineup::fuzz {

/// Requires that `record`, encoded as a message is, reads back as one that encodes to the same
/// bytes.
template <class Record>
void requireRoundTrip(const Record& record) {
  const std::string bytes = test::toBinary(record);
  Record read;
  test::decode<apache::thrift::protocol::TBinaryProtocol>(bytes, read);
  require(test::toBinary(read) == bytes, "a record survives being sent");
}

/// The like of requireRoundTrip() for `config` in a configuration file.
inline void requireFileRoundTrip(const korvel::thrift::hub_module::HeadendConfig& config) {
  static const test::ScratchFile file;
  const std::string bytes = test::toJson(config);
  file.fill(bytes);
  korvel::thrift::hub_module::HeadendConfig read;
  require(readConfigFile(file.path(), read) == CONFIG_FILE_OK && test::toJson(read) == bytes,
          "a configuration survives being saved");
}

}  // namespace lineup::fuzz

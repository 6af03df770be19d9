// Configuration files that anybody may have written. An input is a file.

#include <cstddef>
#include <cstdint>

#include "controller/config_file.h"
#include "print/show_command.h"
#include "tests/fuzz/memory_limit.h"
#include "tests/fuzz/require.h"
#include "tests/fuzz/round_trip.h"
#include "tests/support/scratch_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  static const lineup::test::ScratchFile file;
  file.fill({reinterpret_cast<const char*>(data), size});
  korvel::thrift::hub_module::HeadendConfig config;
  int result = lineup::CONFIG_FILE_NOT_OPENED;
  {
    const lineup::fuzz::MemoryLimit limit;
    result = lineup::readConfigFile(file.path(), config);
  }
  if (result == lineup::CONFIG_FILE_FAILED) {
    return 0;
  }
  lineup::fuzz::require(result == lineup::CONFIG_FILE_OK, "a file that is there can be opened");

  lineup::configDebugString(config);
  lineup::fuzz::requireRoundTrip(config);
  lineup::fuzz::requireFileRoundTrip(config);
  return 0;
}

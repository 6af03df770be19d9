// Configuration files that anybody may have written. An input is a file.

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "controller/config_file.h"
#include "controller/dump.h"
#include "tests/fuzz/memory_limit.h"
#include "tests/fuzz/round_trip.h"

namespace {

/// A file without a name, for the length of the process.
class ScratchFile {
 public:
  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

  void fill(const uint8_t* data, size_t size) {
    lineup::fuzz::require(ftruncate(descriptor_, 0) == 0 &&
                              pwrite(descriptor_, data, size, 0) == static_cast<ssize_t>(size),
                          "the scratch file can be written");
  }

 private:
  const int descriptor_ = memfd_create("config", 0);
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static ScratchFile file;
  static const std::string path = file.path();
  file.fill(data, size);
  korvel::thrift::hub_module::HeadendConfig config;
  {
    const lineup::fuzz::MemoryLimit limit;
    const int result = lineup::readConfigFile(path, config);
    lineup::fuzz::require(result == lineup::CONFIG_FILE_OK || result == lineup::CONFIG_FILE_FAILED,
                          "a file that is there can be opened");
  }

  // Whatever came of it stays in the editor, and is shown, saved and sent.
  lineup::configDebugString(config);
  lineup::fuzz::requireRoundTrip<apache::thrift::protocol::TBinaryProtocol>(config);
  lineup::fuzz::requireRoundTrip<apache::thrift::protocol::TJSONProtocol>(config);
  return 0;
}

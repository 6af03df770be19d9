// main() of the fuzz targets in builds without a fuzzer: runs the inputs in the files and folders
// that the arguments name, and says how many there were.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

void runFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string input((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  // Named before it runs, for the input that ends the process. By C streams: a target may silence
  // the others.
  std::printf("%s, %zu bytes\n", path.c_str(), input.size());
  std::fflush(stdout);
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
}

int runAll(const fs::path& path) {
  if (!fs::is_directory(path)) {
    runFile(path);
    return 1;
  }
  int count = 0;
  for (const fs::directory_entry& entry : fs::directory_iterator(path)) {
    count += runAll(entry.path());
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  int count = 0;
  for (int argument = 1; argument < argc; ++argument) {
    count += runAll(argv[argument]);
  }
  std::printf("%d inputs\n", count);
  return count > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

#include "support/output.h"

#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <ext/stdio_sync_filebuf.h>
#include <iostream>

#include "support/descriptor.h"
#include "support/ending_signals.h"

namespace lineup {

namespace {

struct Destination {
  int descriptor;
  bool givenUp = false;
};

/// Always reports success, or stdio and the streams would stay in the error state. An interrupt
/// drops the rest of this text; later texts are written.
ssize_t print(void* cookie, const char* text, std::size_t size) {
  Destination& destination = *static_cast<Destination*>(cookie);
  destination.givenUp = destination.givenUp && isEndOverdue();
  const bool known = isInterrupted();
  for (std::size_t done = 0; done < size && !destination.givenUp;) {
    const ssize_t count = writeSome(destination.descriptor, {text + done, size - done});
    if (count < 0) {
      break;
    }
    done += static_cast<std::size_t>(count);
    if (!known && isInterrupted()) {
      break;
    }
    destination.givenUp = count == 0 && isEndOverdue();
  }
  return static_cast<ssize_t>(size);
}

void route(std::FILE*& stream, std::ostream& also, Destination& destination, int buffering) {
  const cookie_io_functions_t functions{nullptr, print, nullptr, nullptr};
  std::FILE* const patient = fopencookie(&destination, "w", functions);
  if (patient == nullptr) {
    return;  // COVERAGE_EXCL_LINE: only without memory
  }
  std::setvbuf(patient, nullptr, buffering, BUFSIZ);
  stream = patient;
  // Never deleted: the streams are flushed at the very end.
  also.rdbuf(new __gnu_cxx::stdio_sync_filebuf<char>(patient));
}

}  // namespace

void keepPrinting() {
  static Destination output{STDOUT_FILENO};
  static Destination errors{STDERR_FILENO};
  route(stdout, std::cout, output, isatty(STDOUT_FILENO) == 1 ? _IOLBF : _IOFBF);
  route(stderr, std::cerr, errors, _IONBF);
}

}  // namespace lineup

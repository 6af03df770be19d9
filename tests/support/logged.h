// What is logged.

#pragma once

#include <string>
#include <vector>

#include "support/log.h"
#include "support/words.h"
#include "tests/support/streams.h"

namespace lineup::test {

/// The records that `work` logs up to `level`, without the name and number of the process.
template <class Work>
std::vector<std::string> logged(int level, Work work) {
  log_setup(level, LOG_TO_SYSLOG_AND_STDERR);
  std::vector<std::string> records = splitWords(errorsOf(work), '\n');
  for (std::string& record : records) {
    record.erase(0, record.find("]: ") + 3);
  }
  return records;
}

}  // namespace lineup::test

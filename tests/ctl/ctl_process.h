// Runs the built lineupctl.

#pragma once

#include <string>
#include <vector>

#include "tests/support/console_process.h"
#include "tests/support/file_content.h"

namespace lineup::test {

/// The path of the lineupctl that was built along with the tests.
extern const char* const kCtlProgram;

/// How to start lineupctl with these words.
Start ctl(const std::vector<std::string>& words);

/// Runs lineupctl with `input` to its end.
Outcome runCtl(const std::vector<std::string>& words, const std::string& input = "");

/// Runs it and expects this status, output and line on standard error, without "lineupctl: "; none
/// if it is empty.
void expectCtl(const std::vector<std::string>& words, int status, const std::string& out,
               const std::string& complaint = "", const std::string& input = "");

void fill(const std::string& path, const std::string& content);

}  // namespace lineup::test

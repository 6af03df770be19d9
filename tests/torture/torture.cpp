// Runs a session of the built console again and again, each time with another of its system calls
// or allocations failing, once or from then on, and checks what must hold whatever fails: no crash
// but the ends that are meant, no hang, no sanitizer report, no pending edit taken for committed.
//
// torture [--sample N]: every fault, or N of each kind spread over the session. Prints how many
// were injected and survived; status 1 if something did not hold.

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "simulator/sandbox.h"
#include "tests/support/catalogue_file.h"
#include "tests/support/console_process.h"
#include "tests/support/fake_controller.h"

namespace {

namespace fs = std::filesystem;
using lineup::test::FakeController;
using lineup::test::Outcome;
using lineup::test::Start;

constexpr char kPendingPrompt[] = "(changes to commit) > ";
constexpr char kPrompt[] = "> ";

/// One kind of calls, one of them, and whether the later ones fail, too.
struct Fault {
  std::string kind;
  long at;
  bool on;
};

/// A fault's session as it went: the commands with what each printed and the prompt that followed.
struct Step {
  std::string command;
  std::string printed;
  bool pendingBefore;
  bool pendingAfter;
};

std::vector<std::string> commands(const fs::path& folder) {
  const std::string saved = (folder / "saved.json").string();
  return {"id 7",
          "adddvb 17",
          "addenc 5 2",
          "findtdt",
          "rfmod qam",
          "save " + saved,
          "commit",
          "rfinput status",
          "show",
          "id 8",
          "restore " + saved,
          "reset",
          "rfinput enable SAT3",
          "id 9",
          "commit",
          "tdtscan enable qams",
          "quit"};
}

bool startsWith(const std::string& text, std::size_t at, const std::string& beginning) {
  return text.compare(at, beginning.size(), beginning) == 0;
}

/// Cuts the output at the prompts, which stand at the beginning of a line or behind another prompt.
std::vector<Step> stepsOf(const std::string& out, const std::vector<std::string>& commands) {
  std::vector<Step> steps;
  std::string printed;
  bool pending = false;
  bool prompted = false;
  bool promptMayBegin = true;
  for (std::size_t at = 0; at < out.size();) {
    const bool pendingPrompt = promptMayBegin && startsWith(out, at, kPendingPrompt);
    if (pendingPrompt || (promptMayBegin && startsWith(out, at, kPrompt))) {
      if (prompted && steps.size() < commands.size()) {
        steps.push_back({commands[steps.size()], printed, pending, pendingPrompt});
      }
      pending = pendingPrompt;
      prompted = true;
      printed.clear();
      at += std::strlen(pendingPrompt ? kPendingPrompt : kPrompt);
    } else {
      promptMayBegin = out[at] == '\n';
      printed += out[at++];
    }
  }
  return steps;
}

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

bool isAllocation(const Fault& fault) {
  return fault.kind == "malloc" || fault.kind == "new";
}

/// Ends that are meant: a status of 0, and the exceptions that end the program.
bool endsAsMeant(const Fault& fault, const Outcome& outcome) {
  if (outcome.signal == 0) {
    return outcome.status == 0;
  }
  return outcome.signal == SIGABRT && (contains(outcome.err, "out_of_range") ||
                                       (isAllocation(fault) && contains(outcome.err, "bad_alloc")));
}

/// Whether the command may clear the mark of pending changes, and did so on the controller's word.
bool clearsRightly(const Step& step) {
  const bool talks = step.command == "commit" || step.command == "reset" ||
                     startsWith(step.command, 0, "restore ");
  return talks && !contains(step.printed, "ERROR: ");
}

/// What does not hold after a session, empty if all does.
std::string complaint(const Fault& fault, const Outcome& outcome, const FakeController& controller,
                      const std::vector<std::string>& script) {
  if (!endsAsMeant(fault, outcome)) {
    return "ended with status " + std::to_string(outcome.status) + ", signal " +
           std::to_string(outcome.signal);
  }
  if (contains(outcome.err, "Sanitizer") || contains(outcome.err, "runtime error")) {
    return "a sanitizer complains";
  }
  long confirmed = 0;
  const std::vector<Step> steps = stepsOf(outcome.out, script);
  for (const Step& step : steps) {
    if (step.pendingBefore && !step.pendingAfter && !clearsRightly(step)) {
      return "\"" + step.command + "\" cleared the pending changes";
    }
    const bool failedCommit = step.command == "commit" && contains(step.printed, "ERROR: ");
    if (failedCommit && step.pendingBefore != step.pendingAfter) {
      return "a failed commit changed what is pending";
    }
    confirmed += step.command == "commit" && !failedCommit ? 1 : 0;
  }
  const auto methods = controller.methods();
  if (std::count(methods.begin(), methods.end(), "setHeadendConfig") < confirmed) {
    return "a commit that the controller never got counts as done";
  }
  const bool memoryIsLeft = !(isAllocation(fault) && fault.on);
  if (outcome.signal != 0 && memoryIsLeft && !steps.empty() && steps.back().pendingAfter &&
      !contains(outcome.err, "The uncommitted changes")) {
    return "nothing is said about the pending edits";
  }
  return "";
}

/// A folder and a controller for sessions, one after the other.
class Torture {
 public:
  Torture() {
    std::string name = (fs::temp_directory_path() / "torture-XXXXXX").string();
    folder_ = mkdtemp(name.data());
    lineup::test::CatalogueFile catalogue(lineup::kCataloguePath);
    // Columns: what the console selects by, the name and the service id of the channel.
    catalogue.insert(lineup::test::kSat, {{7, "11778"},
                                          {15, "17"},
                                          {16, "Velaria"},
                                          {17, "4101"},
                                          {19, "1"},
                                          {23, "spa,eng"},
                                          {24, "101,102"}});
    catalogue.insert(lineup::test::kTdt, {{5, "506000"}, {10, "18"}, {11, "Ondaria"}});
  }
  ~Torture() { fs::remove_all(folder_); }
  Torture(const Torture&) = delete;
  Torture& operator=(const Torture&) = delete;

  /// Runs the session; returns how many calls of the fault's kind it made.
  long run(const Fault& fault) {
    FakeController controller;
    controller.setStatus(statusWithInputs());
    const std::vector<std::string> script = commands(folder_);
    std::string input;
    for (const std::string& command : script) {
      input += command + "\n";
    }
    const Outcome outcome = lineup::test::run(start(fault), input);
    const std::string wrong = complaint(fault, outcome, controller, script);
    if (!wrong.empty()) {
      ++broken_;
      std::cout << fault.kind << " call " << fault.at << (fault.on ? " and all later" : "") << ": "
                << wrong << "\n--- output\n"
                << outcome.out << "\n--- errors\n"
                << outcome.err << "\n---" << std::endl;
    }
    long calls = 0;
    std::ifstream(folder_ / "count") >> calls;
    return calls;
  }

  /// Every fault of the kind, or about `sample` of them if that is not 0.
  void runAll(const std::string& kind, long sample) {
    const long calls = run({kind, 0, false});
    const long step = sample == 0 ? 1 : std::max(1L, 2 * calls / sample);
    long injected = 0;
    for (long at = 1; at <= calls; at += step) {
      run({kind, at, false});
      run({kind, at, true});
      injected += 2;
    }
    std::cout << kind << ": " << calls << " calls, " << injected << " faults" << std::endl;
    injected_ += injected;
  }

  long injected() const { return injected_; }
  long broken() const { return broken_; }

 private:
  static korvel::thrift::hub_module::HeadendStatus statusWithInputs() {
    using korvel::thrift::general::RFInputId;
    korvel::thrift::hub_module::HeadendStatus status;
    for (int id = RFInputId::SAT1; id <= RFInputId::SAT8; ++id) {
      status.satRFInputs[static_cast<RFInputId::type>(id)];
    }
    status.tdtRFInputs[RFInputId::TDT1];
    status.tdtRFInputs[RFInputId::TDT2];
    return status;
  }

  Start start(const Fault& fault) const {
    Start start;
    start.environment["LD_PRELOAD"] = FAULT_INJECTION;
    start.environment["ASAN_OPTIONS"] = "verify_asan_link_order=0:allocator_may_return_null=1";
    start.environment["TMPDIR"] = folder_.string();
    start.environment["FAULT_KIND"] = fault.kind;
    start.environment["FAULT_AT"] = std::to_string(fault.at);
    start.environment["FAULT_ON"] = fault.on ? "on" : "once";
    start.environment["FAULT_COUNT"] = (folder_ / "count").string();
    return start;
  }

  fs::path folder_;
  long injected_ = 0;
  long broken_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  const long sample =
      argc == 3 && std::string(argv[1]) == "--sample" ? std::strtol(argv[2], nullptr, 10) : 0;
  lineup::enterSandbox();
  Torture torture;
  // Where malloc is the sanitizer's own, or needed to write the counts of what was run, the C++
  // allocations fail instead.
  for (const char* kind : {"socket", "connect", "send", "recv", "poll", "open", "write", "read",
                           "close", "syncfs", "database", FAULTS_LEAVE_MALLOC ? "new" : "malloc"}) {
    torture.runAll(kind, sample);
  }
  std::cout << torture.injected() << " faults injected, " << torture.injected() - torture.broken()
            << " survived" << std::endl;
  return torture.broken() == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

// Runs sessions of the built console again and again, each time with another of their system calls
// or allocations failing, once or from then on, and checks what must hold whatever fails: no crash
// but the ends that are meant, no hang, no sanitizer report, no pending edit taken for committed,
// and a line for each call to the controller that failed and for none that did not.
//
// torture [--sample N]: every fault, or about N of each kind in each session, spread over it.
// Prints how many were injected and survived; status 1 if something did not hold.

#include <algorithm>
#include <cctype>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <iostream>
#include <ranges>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/catalogue_file.h"
#include "tests/support/console_texts.h"
#include "tests/support/copies_in_tmp.h"
#include "tests/support/fake_controller.h"
#include "tests/support/matches.h"
#include "tests/support/program_process.h"
#include "tests/support/rf_inputs.h"
#include "tests/support/sandbox.h"
#include "tests/support/temporary_folder.h"
#include "tests/torture/faulty_console.h"

namespace lineup::test {
namespace {

namespace fs = std::filesystem;

constexpr char kPrompt[] = "> ";
constexpr char kError[] = "ERROR: ";
constexpr char kRescued[] = "The uncommitted changes";

// ---- what is run

/// One run of the console. A line holds what is typed up to the next prompt.
struct Script {
  const char* name;
  std::vector<std::string> arguments;
  std::vector<std::string> lines;
  bool terminal = false;
};

// The controller has satellite inputs but no terrestrial ones: to switch one of these ends the
// program. "given.json" is there before each session.
const Script kSessions[] = {
    {"edit",
     {},
     {"id 7", "adddvb 17", "addenc 5 2", "findtdt", "rfmod qam", "save saved.json", "commit",
      "rfinput status", "show", "id 8", "restore saved.json", "reset", "rfinput enable SAT3",
      "id 9", "commit", "tdtscan enable qams", "quit"}},
    {"lists",
     {},
     {"addpls\n1 131070", "rfaddempty 1", "rfadddvb 17", "ipaddenc 5 2",
      "addipmux 1 2 udp://239.0.0.1:5000", "c", "rmpls", "findsat Velaria", "commit", "clear",
      "country italy", "id 99999999999999999999", "commit", "show", "quit"}},
    {"exception", {}, {"id 7", "adddvb 17", "rfinput enable TDT1"}},
    {"save mode", {"-s", "saved.json"}, {}},
    {"restore mode", {"-r", "given.json"}, {}},
    {"type mode", {"-t", "skyit"}, {}},
    {"terminal",
     {},
     {"id 77\x7f", "adddv\t17", "rfi\tst\t", "commit", "id 8", "\x1b[A\x1b[A", "adddvb \t\x15reset",
      "quit"},
     true},
};

/// What the failing of a kind of calls may lead to.
enum class Effect {
  None,     ///< nothing but lost output or a lost file: the controller receives the same calls
  Local,    ///< other commands than were meant, but all calls to the controller work
  Calls,    ///< a call to the controller fails
  Any,      ///< either
  NoMemory  ///< either, or the end of the program
};

struct Kind {
  const char* name;
  Effect effect;
};

constexpr Kind kKinds[] = {
    {"socket", Effect::Calls}, {"connect", Effect::Calls},   {"send", Effect::Calls},
    {"recv", Effect::Calls},   {"poll", Effect::Any},        {"open", Effect::Local},
    {"write", Effect::Local},  {"read", Effect::Local},      {"close", Effect::None},
    {"syncfs", Effect::None},  {"database", Effect::Local},  {"log", Effect::None},
    {"copy", Effect::None},    {"malloc", Effect::NoMemory}, {"new", Effect::NoMemory},
};

/// Whether calls of the kind fail in the session. On a terminal malloc is not failed: libedit and
/// libtinfo crash. There operator new is failed instead; elsewhere it is covered by malloc, except
/// with sanitizers.
bool applies(const Kind& kind, const Script& session) {
  const std::string name = kind.name;
  const bool mallocFails = !session.terminal;
  return name == "malloc" ? mallocFails : name != "new" || !mallocFails || !NEW_USES_MALLOC;
}

/// One of the calls of a kind, 0 for none, and whether the later ones fail, too.
struct Injection {
  Kind kind;
  long at;
  bool on;
};

// ---- what comes of it

struct Result {
  pid_t process = 0;
  Outcome outcome{};
  std::vector<ReceivedCall> calls{};
  long faultyCalls = 0;  ///< how many calls of the fault's kind were made
  std::string hang{};    ///< why the end was not waited for
};

/// A line as it went: what was printed and the prompt that followed. The first is the start.
struct Step {
  std::string line;
  std::string printed;
  bool pendingBefore;
  bool pendingAfter;
};

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

/// Cuts the output at the prompts, which stand at the beginning of a line or after another prompt.
std::vector<Step> stepsOf(const std::string& out, const std::vector<std::string>& lines) {
  std::vector<Step> steps;
  std::string line;
  std::string printed;
  bool pending = false;
  bool promptMayBegin = true;
  for (std::size_t at = 0; at < out.size();) {
    const std::string_view rest = std::string_view(out).substr(at);
    const bool pendingPrompt = promptMayBegin && rest.starts_with(kPending);
    if (pendingPrompt || (promptMayBegin && rest.starts_with(kPrompt))) {
      steps.push_back({line, printed, pending, pendingPrompt});
      line = steps.size() <= lines.size() ? lines[steps.size() - 1] : "";
      pending = pendingPrompt;
      printed.clear();
      at += pendingPrompt ? kPending.size() : std::strlen(kPrompt);
    } else {
      promptMayBegin = out[at] == '\n';
      printed += out[at++];
    }
  }
  return steps;
}

// ---- what must hold; each returns what does not, empty if all does

/// Whether the end is one that is meant: a status of 0, or an exception that ends the program.
bool endsAsMeant(const Injection& fault, const Outcome& outcome) {
  if (outcome.signal == 0) {
    return outcome.status == 0;
  }
  const bool noMemory = fault.kind.effect == Effect::NoMemory;
  const bool errorsGetLost = std::string(fault.kind.name) == "write";
  return outcome.signal == SIGABRT && (errorsGetLost || contains(outcome.err, "out_of_range") ||
                                       (noMemory && contains(outcome.err, "bad_alloc")));
}

std::string wrongEnd(const Injection& fault, const Result& result) {
  const Outcome& outcome = result.outcome;
  if (!result.hang.empty()) {
    return result.hang;
  }
  if (!endsAsMeant(fault, outcome)) {
    return "ended with status " + std::to_string(outcome.status) + ", signal " +
           std::to_string(outcome.signal);
  }
  return contains(outcome.err, "Sanitizer") || contains(outcome.err, "runtime error")
             ? "a sanitizer complains"
             : "";
}

/// One line for a call that fails once, none where nothing concerns the controller.
std::string wrongErrors(const Injection& fault, const Result& result) {
  const long errors = count(result.outcome.out, kError);
  const bool injected = fault.at > 0;
  const bool mayFail = injected && fault.kind.effect >= Effect::Calls;
  const bool mustFail = injected && fault.kind.effect == Effect::Calls;
  const bool tooMany = !mayFail ? errors > 0 : !fault.on && errors > 1;
  return tooMany || (mustFail && errors == 0)
             ? std::to_string(errors) + " failed calls are reported"
             : "";
}

bool commits(const Step& step) {
  return step.line == "commit" || step.line == "c";
}

bool commitsOrReplaces(const Step& step) {
  return commits(step) || step.line == "reset" || step.line.starts_with("restore ");
}

bool callsController(const Step& step) {
  return commitsOrReplaces(step) || step.line.starts_with("rfinput ") ||
         (step.line.starts_with("save ") && !step.pendingBefore);
}

bool failed(const Step& step) {
  return contains(step.printed, kError);
}

std::string wrongStep(const Step& step) {
  const bool mayClear = commitsOrReplaces(step) && !failed(step);
  if (step.pendingBefore && !step.pendingAfter && !mayClear) {
    return "\"" + step.line + "\" cleared the pending changes";
  }
  return step.pendingAfter && commits(step) && !failed(step) ? "a commit that worked is pending"
                                                             : "";
}

/// What the prompts and the lines between them tell.
std::string wrongSteps(const Injection& fault, const Result& result,
                       const std::vector<std::string>& lines) {
  const std::vector<Step> steps = stepsOf(result.outcome.out, lines);
  bool allFail = false;
  for (const Step& step : steps) {
    if (allFail && callsController(step) && !failed(step)) {
      return "\"" + step.line + "\" says nothing of a failed call";
    }
    allFail = allFail || (failed(step) && fault.on && fault.kind.effect == Effect::Calls);
    if (std::string wrong = wrongStep(step); !wrong.empty()) {
      return wrong;
    }
  }
  const auto done =
      std::ranges::count_if(steps, [](const Step& step) { return commits(step) && !failed(step); });
  if (std::ranges::count(result.calls, "setHeadendConfig", &ReceivedCall::method) < done) {
    return "a commit that the controller never got counts as done";
  }
  // Without memory the rescue of the pending edits fails as well, or the fault was in it.
  const bool rescues = fault.kind.effect != Effect::NoMemory ||
                       (!fault.on && contains(result.outcome.err, "bad_alloc"));
  const bool pendingAtEnd = !steps.empty() && steps.back().pendingAfter;
  return result.outcome.signal != 0 && pendingAtEnd && rescues &&
                 !contains(result.outcome.err, kRescued)
             ? "nothing is said about the pending edits"
             : "";
}

/// The call's frame with zeros for the digits of each UUID, which is another one in each session.
std::string frameWithoutUuids(const ReceivedCall& call) {
  constexpr std::string_view kForm = "00000000-0000-0000-0000-000000000000";
  const auto fits = [](char character, char form) {
    return form == '-' ? character == '-'
                       : std::isxdigit(static_cast<unsigned char>(character)) != 0;
  };
  std::string frame = call.frame;
  for (std::size_t begin = 0; begin + kForm.size() <= frame.size(); ++begin) {
    if (std::ranges::equal(std::string_view(frame).substr(begin, kForm.size()), kForm, fits)) {
      frame.replace(begin, kForm.size(), kForm);
    }
  }
  return frame;
}

bool sameCalls(const std::vector<ReceivedCall>& calls, const std::vector<ReceivedCall>& others) {
  return std::ranges::equal(calls, others, {}, frameWithoutUuids, frameWithoutUuids);
}

/// `undisturbed` is the session without a fault.
std::string complaint(const Script& session, const Injection& fault, const Result& result,
                      const Result& undisturbed) {
  std::string wrong = wrongEnd(fault, result);
  if (wrong.empty()) {
    wrong = wrongErrors(fault, result);
  }
  if (wrong.empty() && fault.kind.effect == Effect::None &&
      !sameCalls(result.calls, undisturbed.calls)) {
    wrong = "the controller did not receive the same calls";
  }
  const bool promptsAreSeen = !session.terminal && std::string(fault.kind.name) != "write";
  if (wrong.empty() && promptsAreSeen) {
    wrong = wrongSteps(fault, result, session.lines);
  }
  return wrong;
}

/// A folder and a controller for sessions, one after the other.
class Torture {
 public:
  Torture() {
    CatalogueFile catalogue(kCataloguePath);
    // The frequency, the number, the name, the SID, the service type and two lists.
    catalogue.insert(kSat, {{7, "11778"},
                            {15, "17"},
                            {16, "Velaria"},
                            {17, "4101"},
                            {19, "1"},
                            {23, "spa,eng"},
                            {24, "101,102"}});
    catalogue.insert(kTdt, {{5, "506000"}, {10, "18"}, {11, "Ondaria"}});
    const FakeController controller;
    runConsole({"-s", folder_.file("given.json")});
  }

  /// Every fault of the kind in the session, or about `sample` of them if that is not 0. Returns
  /// how many.
  long runAll(const Script& session, const Kind& kind, long sample) {
    const Injection none{kind, 0, false};
    const Result undisturbed = run(session, none);
    judge(session, none, undisturbed, undisturbed);
    const long step = sample == 0 ? 1 : std::max(1L, 2 * undisturbed.faultyCalls / sample);
    long injected = 0;
    for (long at = 1; at <= undisturbed.faultyCalls; at += step) {
      for (const bool on : {false, true}) {
        const Injection fault{kind, at, on};
        const Result result = run(session, fault);
        judge(session, fault, result, undisturbed);
        injected += result.faultyCalls >= at ? 1 : 0;
      }
    }
    return injected;
  }

  long broken() const { return broken_; }

 private:
  Result run(const Script& session, const Injection& fault) const {
    FakeController controller;
    controller.setConfig(configWithIPInput());
    controller.setStatus(statusWithSatInputs());
    Result result;
    try {
      ProgramProcess console(start(session, fault));
      result.process = console.pid();
      console.send(inputOf(session));
      result.outcome = console.finish();
    } catch (const std::runtime_error& error) {
      result.hang = error.what();
    }
    if (session.terminal) {
      result.outcome.err = result.outcome.out;
    }
    result.calls = controller.calls();
    result.faultyCalls = FaultCounts(folder_.file("count")).calls;
    return result;
  }

  void judge(const Script& session, const Injection& fault, const Result& result,
             const Result& undisturbed) {
    const std::string wrong = complaint(session, fault, result, undisturbed);
    removeRescued(result);
    if (!wrong.empty()) {
      ++broken_;
      std::cout << "\n"
                << session.name << ", " << fault.kind.name << " call " << fault.at
                << (fault.on ? " and all later" : "") << ": " << wrong << "\n--- output\n"
                << result.outcome.out << "\n--- errors\n"
                << result.outcome.err << "\n---" << std::endl;
    }
  }

  /// Copies that could not be written in the session's folder, or not removed, are in /tmp. The end
  /// that is forced is that of a child process, and only its message has its name.
  static void removeRescued(const Result& result) {
    const std::string& errors = result.outcome.err;
    for (std::size_t found = errors.find(kUncommittedIn); found != std::string::npos;
         found = errors.find(kUncommittedIn, found + 1)) {
      const std::size_t begin = found + kUncommittedIn.size();
      fs::remove(errors.substr(begin, errors.find(": ", begin) - begin));
    }
    for (const fs::path& copy : copiesInTmp(result.process)) {
      fs::remove(copy);
    }
  }

  /// A terminal's input ends only when that is typed: a line that says so may have been lost.
  static std::string inputOf(const Script& session) {
    std::string input;
    for (const std::string& line : session.lines) {
      input += line + "\n";
    }
    return input + (session.terminal ? "\n\x04" : "");
  }

  static korvel::thrift::hub_module::HeadendConfig configWithIPInput() {
    korvel::thrift::hub_module::HeadendConfig config;
    korvel::thrift::hub_module::IPInput& input = config.ipInputs["1/2"];
    input.__set_slot(1);
    input.__set_interfaceId(2);
    return config;
  }

  static korvel::thrift::hub_module::HeadendStatus statusWithSatInputs() {
    korvel::thrift::hub_module::HeadendStatus status = tenInputs("----------");
    status.tdtRFInputs.clear();
    return status;
  }

  Start start(const Script& session, const Injection& fault) const {
    Start start = startIn(folder_, session.terminal);
    start.arguments = session.arguments;
    start.environment["TERM"] = "xterm";
    start.environment["TMPDIR"] = std::nullopt;
    injectFault(start, {fault.kind.name, fault.at, fault.on ? "on" : "once"},
                folder_.file("count"));
    return start;
  }

  const TemporaryFolder folder_;
  long broken_ = 0;
};

/// Injects the faults, or about `sample` of each kind in each session. Returns the status.
int torture(long sample) {
  Torture torture;
  long injected = 0;
  for (const Script& session : kSessions) {
    std::cout << session.name << ":" << std::flush;
    for (const Kind& kind : kKinds) {
      if (!applies(kind, session)) {
        continue;
      }
      const long faults = torture.runAll(session, kind, sample);
      std::cout << " " << faults << " " << kind.name << std::flush;
      injected += faults;
    }
    std::cout << std::endl;
  }
  std::cout << injected << " faults injected, " << injected - torture.broken() << " survived"
            << std::endl;
  return torture.broken() == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace lineup::test

int main(int argc, char** argv) {
  try {
    const long sample =
        argc == 3 && std::string(argv[1]) == "--sample" ? std::strtol(argv[2], nullptr, 10) : 0;
    lineup::test::enterSandbox(argv);
    return lineup::test::torture(sample);
  } catch (const std::exception& error) {
    std::cerr << error.what() << std::endl;
    return EXIT_FAILURE;
  }
}

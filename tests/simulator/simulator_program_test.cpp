// The simulator as a program: options, errors, files, signals, clients that misbehave.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "model/headend_places.h"
#include "simulator/options.h"
#include "tests/simulator/simulator_process.h"
#include "tests/support/matches.h"

namespace lineup::test {
namespace {

namespace hub_module = korvel::thrift::hub_module;

constexpr const char* kHint = "Try 'headend-simulator --help' for more information.\n";

void expectRefusal(const Outcome& outcome, const std::string& message) {
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "headend-simulator: " + message + "\n");
}

/// Runs a simulator with this file for its state, which it is to refuse.
Outcome runWithState(const std::string& path) {
  return runSimulator({"--port", "0", "--no-catalogue", "--state", path});
}

void expectUsageError(const std::vector<std::string>& arguments, const std::string& message) {
  const Outcome outcome = runSimulator(arguments);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "headend-simulator: " + message + "\n" + kHint);
}

/// A bare connection to the simulator.
class RawConnection {
 public:
  explicit RawConnection(int port) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
      throw std::runtime_error("no connection");
    }
  }
  ~RawConnection() { close(socket_); }
  RawConnection(const RawConnection&) = delete;
  RawConnection& operator=(const RawConnection&) = delete;

  void send(const std::string& bytes) const {
    ASSERT_EQ(::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
  }

 private:
  int socket_;
};

void setHeadendName(const SimulatorProcess& simulator, const std::string& name) {
  hub_module::HeadendConfig config;
  simulator.connect()->getHeadendConfig(config);
  config.headendGlobalConfig.headendName = name;
  hub_module::HeadendStatus status;
  simulator.connect()->setHeadendConfig(status, config);
}

std::string headendName(const SimulatorProcess& simulator) {
  hub_module::HeadendConfig config;
  simulator.connect()->getHeadendConfig(config);
  return config.headendGlobalConfig.headendName;
}

// ---- options

TEST(SimulatorOptions, HelpNamesEveryOption) {
  const Outcome outcome = runSimulator({"--help"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out.rfind("Usage: headend-simulator [OPTION]...\n", 0), 0U);
  for (const char* option :
       {"--port N", "--state FILE", "--catalogue FILE", "--no-catalogue", "--replace-catalogue",
        "--without-input NAME", "--not-ready SECONDS", "--ready-fd N", "--in-memory", "--keep",
        "--delay CALL[:N]=SECONDS", "--refuse CALL[:N]", "--break CALL[:N]", "--timestamps",
        "--help", "--version"}) {
    const std::string line = std::string("\n  ") + option;
    EXPECT_TRUE(outcome.out.find(line + " ") != std::string::npos ||
                outcome.out.find(line + "\n") != std::string::npos)
        << option;
  }
}

TEST(SimulatorOptions, HelpNamesTheHeadendsPlaces) {
  const std::string help = runSimulator({"--help"}).out;
  for (const std::string& place :
       {" on " + std::string(kControllerAddress) + ": answers",
        " instead of " + std::to_string(kControllerPort) + "; 0 for",
        std::string("instead of\n                         ") + kCataloguePath + "\n",
        std::string("instead of\n                         ") + simulator::Options().stateFile +
            "\n"}) {
    EXPECT_NE(help.find(place), std::string::npos) << place;
  }
}

TEST(SimulatorOptions, VersionIsTheProjects) {
  const Outcome outcome = runSimulator({"--version"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "headend-simulator " PROJECT_VERSION "\n");
  EXPECT_EQ(outcome.err, "");
}

TEST(SimulatorOptions, ThatCannotBeTakenAreRefusedWithAHint) {
  const struct {
    std::vector<std::string> arguments;
    const char* message;
  } cases[] = {
      {{"--nonsense"}, "unknown option '--nonsense'"},
      {{"-x"}, "unknown option '-x'"},
      {{"--help=yes"}, "unknown option '--help=yes'"},
      {{"--port"}, "option '--port' needs an argument"},
      {{"catalogue.sqlite"}, "unexpected argument 'catalogue.sqlite'"},
      {{"--port", "65536"}, "--port needs a number from 0 to 65535, not '65536'"},
      {{"--port", "-1"}, "--port needs a number from 0 to 65535, not '-1'"},
      {{"--port", "91x"}, "--port needs a number from 0 to 65535, not '91x'"},
      {{"--not-ready", ""}, "--not-ready needs a number from 0 to 86400, not ''"},
      {{"--ready-fd", "77"}, "--ready-fd needs an open file descriptor, not '77'"},
      {{"--state", ""}, "--state needs a file name"},
      {{"--catalogue="}, "--catalogue needs a file name"},
  };
  for (const auto& each : cases) {
    expectUsageError(each.arguments, each.message);
  }
  for (const std::string name : {"SAT9", "SAT", "TDTALL", "SATALL", ""}) {
    expectUsageError({"--without-input", name},
                     "--without-input needs TDT1, TDT2 or SAT1 to SAT8, not '" + name + "'");
  }
}

// ---- port

TEST(SimulatorPort, PortInUseIsRefusedAndNothingIsTouched) {
  const TemporaryFolder folder;
  const SimulatorProcess running(folder);
  const std::string state = contentOf(folder.file("state.json"));
  const std::string port = std::to_string(running.port());
  expectRefusal(
      runSimulator({"--port", port, "--state", folder.file("other.json"), "--catalogue",
                    folder.file("other.sqlite")}),
      "cannot listen on 127.0.0.1 port " + port + ": Could not bind: Address already in use");
  EXPECT_EQ(namesIn(folder.path()), (std::vector<std::string>{"catalogue.sqlite", "state.json"}));
  EXPECT_EQ(contentOf(folder.file("state.json")), state);
  EXPECT_EQ(headendName(running), "Simulated headend");
}

TEST(SimulatorPort, IsFreeAtOnceAfterAnEndWithOpenConnections) {
  const TemporaryFolder folder;
  SimulatorProcess first(folder);
  Connection connection = first.connect();
  hub_module::HeadendConfig config;
  connection->getHeadendConfig(config);
  EXPECT_EQ(first.end().status, 0);
  const SimulatorProcess second(folder, {}, first.port());
  EXPECT_EQ(second.port(), first.port());
  EXPECT_EQ(headendName(second), "Simulated headend");
}

// ---- readiness

TEST(SimulatorReadiness, IsWrittenToADescriptorWhichIsClosedThen) {
  const TemporaryFolder folder;
  // The substitution ends when nobody has the pipe open any more.
  const Start start{
      .program = "sh",
      .arguments = {"-c",
                    "port=$(\"$1\" --port 0 --state state --no-catalogue --ready-fd 3 3>&1 >log & "
                    "echo $! >pid); cat log; echo \"$port\"; kill $(cat pid)",
                    "sh", kSimulatorProgram},
      .folder = folder.path()};
  const Outcome outcome = run(start);
  const std::string ready = "headend-simulator: ready on 127.0.0.1:";
  ASSERT_EQ(outcome.out.substr(0, ready.size()), ready);
  const std::string port = outcome.out.substr(ready.size(), outcome.out.find('\n') - ready.size());
  EXPECT_EQ(outcome.out, ready + port + "\n" + port + "\n");
}

TEST(SimulatorReadiness, DescriptorIsClosedWithoutALineWhenTheStartFails) {
  const Start start{
      .program = "sh",
      .arguments = {"-c",
                    "\"$1\" --port 0 --state /dev/null --ready-fd 3 3>&1 >/dev/null 2>&1 | wc -c",
                    "sh", kSimulatorProgram}};
  EXPECT_EQ(run(start).out, "0\n");
}

// ---- signals

class SimulatorSignals : public testing::TestWithParam<int> {};

TEST_P(SimulatorSignals, EndItCleanly) {
  const TemporaryFolder folder;
  SimulatorProcess simulator(folder);
  setHeadendName(simulator, "kept");
  simulator.signal(GetParam());
  const Outcome outcome = simulator.finish();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(namesIn(folder.path()), (std::vector<std::string>{"catalogue.sqlite", "state.json"}));
  EXPECT_EQ(headendName(SimulatorProcess(folder, {}, simulator.port())), "kept");
}

INSTANTIATE_TEST_SUITE_P(All, SimulatorSignals, testing::Values(SIGTERM, SIGINT, SIGHUP, SIGQUIT));

TEST(SimulatorSignal, ThatIsIgnoredFromTheStartDoesNotEndIt) {
  const Start start{
      .program = "sh",
      .arguments = {"-c", "trap '' INT HUP; exec \"$@\"", "sh", kSimulatorProgram, "--port", "0",
                    "--in-memory", "--no-catalogue", "--delay", "all=0.3"}};
  ProgramProcess simulator(start);
  const std::string ready = simulator.readUntil("\n");
  const int port = std::stoi(ready.substr(ready.rfind(':') + 1));
  simulator.signal(SIGHUP);
  simulator.signal(SIGINT);
  for (int call = 0; call < 2; ++call) {
    hub_module::HeadendConfig config;
    EXPECT_NO_THROW(Connection(port)->getHeadendConfig(config));
  }
  simulator.signal(SIGTERM);
  EXPECT_EQ(simulator.finish().status, 0);
}

TEST(SimulatorSignal, EndsItWhileClientsStall) {
  const TemporaryFolder folder;
  SimulatorProcess simulator(folder);
  const RawConnection silent(simulator.port());
  const RawConnection halfway(simulator.port());
  halfway.send(std::string("\0\0\1\0half a frame", 16));
  EXPECT_EQ(headendName(simulator), "Simulated headend");
  EXPECT_EQ(simulator.end().status, 0);
}

// ---- clients

TEST(SimulatorClients, ThatStallBlockNobody) {
  const TemporaryFolder folder;
  const SimulatorProcess simulator(folder);
  const RawConnection silent(simulator.port());
  const RawConnection halfway(simulator.port());
  halfway.send(std::string("\0\0\1\0half a frame", 16));
  for (int call = 0; call < 20; ++call) {
    EXPECT_EQ(headendName(simulator), "Simulated headend");
  }
}

TEST(SimulatorClients, ThatSayNothingHoweverManyLockNobodyOut) {
  const TemporaryFolder folder;
  const SimulatorProcess simulator(folder);
  std::vector<std::unique_ptr<RawConnection>> clients;
  for (int client = 0; client < 600; ++client) {
    clients.push_back(std::make_unique<RawConnection>(simulator.port()));
    if (client % 2 == 0) {
      clients.back()->send(std::string("\0\0\1\0half a frame", 16));
    }
  }
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(headendName(simulator), "Simulated headend");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(8));
}

TEST(SimulatorClients, ThatSendGarbageOrHangUpDoNoHarm) {
  const TemporaryFolder folder;
  SimulatorProcess simulator(folder);
  for (const std::string& bytes :
       {std::string("GET / HTTP/1.1\r\n\r\n"), std::string("\0\0\0\4junk", 8),
        std::string("\377\377\377\377", 4), std::string("\0\0\0\0", 4), std::string("\0", 1),
        std::string("\0\0\0\14\200\1\0\1\0\0\0\4none", 16)}) {
    const RawConnection garbage(simulator.port());
    garbage.send(bytes);
  }
  EXPECT_EQ(headendName(simulator), "Simulated headend");
  EXPECT_EQ(simulator.nextLine(), "getHeadendConfig: 0 RF entries, 0 IP entries, modulation COFDM");
}

TEST(SimulatorClients, MayMakeSeveralCallsOnOneConnection) {
  const TemporaryFolder folder;
  const SimulatorProcess simulator(folder);
  Connection connection = simulator.connect();
  for (int call = 0; call < 3; ++call) {
    hub_module::HeadendConfig config;
    connection->getHeadendConfig(config);
    EXPECT_EQ(config.ipInputs.size(), 2U);
  }
}

// ---- faults

std::string errorOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const hub_module::ControllerTaskIsNotReady& error) {
    return "not ready: " + error.reason;
  } catch (const apache::thrift::transport::TTransportException&) {
    return "broken";
  }
  return "";
}

TEST(SimulatorFaults, RefuseAndBreakTheNthCallOfAKind) {
  const TemporaryFolder folder;
  SimulatorProcess simulator(folder,
                             {"--refuse", "getHeadendConfig:2", "--break", "getHeadendConfig:3"});
  const auto get = [&] { headendName(simulator); };
  hub_module::HeadendStatus status;
  simulator.connect()->getHeadendStatus(status);
  EXPECT_EQ(errorOf(get), "");
  EXPECT_EQ(errorOf(get), "not ready: refused");
  EXPECT_EQ(errorOf(get), "broken");
  EXPECT_EQ(errorOf(get), "");
  simulator.nextLine();
  simulator.nextLine();
  EXPECT_EQ(simulator.nextLine(), "getHeadendConfig: refused, as asked");
  EXPECT_EQ(simulator.nextLine(), "getHeadendConfig: broken off, as asked");
}

TEST(SimulatorFaults, OfACommitLeaveTheConfigurationAsItWas) {
  const TemporaryFolder folder;
  const SimulatorProcess simulator(
      folder, {"--refuse", "setHeadendConfig:1", "--break", "setHeadendConfig:2"});
  const std::string state = contentOf(folder.file("state.json"));
  const auto set = [&] { setHeadendName(simulator, "lost"); };
  EXPECT_EQ(errorOf(set), "not ready: refused");
  EXPECT_EQ(errorOf(set), "broken");
  EXPECT_EQ(headendName(simulator), "Simulated headend");
  EXPECT_EQ(contentOf(folder.file("state.json")), state);
}

TEST(SimulatorFaults, OfAllCallsCountThemTogether) {
  const TemporaryFolder folder;
  const SimulatorProcess simulator(folder, {"--refuse", "all:2"});
  hub_module::HeadendStatus status;
  simulator.connect()->getHeadendStatus(status);
  EXPECT_EQ(errorOf([&] { headendName(simulator); }), "not ready: refused");
  EXPECT_EQ(headendName(simulator), "Simulated headend");
}

TEST(SimulatorFaults, DelayHoldsItsCall) {
  const TemporaryFolder folder;
  const SimulatorProcess simulator(folder, {"--delay", "getHeadendConfig:1=0.7"});
  const auto start = std::chrono::steady_clock::now();
  headendName(simulator);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(700));
}

TEST(SimulatorFaults, DelayHoldsNeitherOtherCallsNorTheEnd) {
  const TemporaryFolder folder;
  SimulatorProcess simulator(folder, {"--delay", "getHeadendConfig:2=3600"});
  EXPECT_EQ(headendName(simulator), "Simulated headend");
  std::thread late([&] { errorOf([&] { headendName(simulator); }); });
  hub_module::HeadendStatus status;
  simulator.connect()->getHeadendStatus(status);
  EXPECT_EQ(simulator.end().status, 0);
  late.join();
}

TEST(SimulatorFaults, ThatCannotBeReadAreRefused) {
  expectUsageError(
      {"--refuse", "everything"},
      "--refuse needs the name of a call, not 'everything'; the names are getHeadendConfig, "
      "getHeadendStatus, setHeadendConfig, setTDTRFInputConfig, setSATRFInputConfig, "
      "setLineupConfig, setHeadendGlobalConfig, setRFInputsScanConfig, "
      "validateHeadendConfig, orderRFInputsScan, resetHeadend, resetFactoryDefaults, "
      "all");
  for (const std::string text : {"", "all:0", "all:x", "all=1", "all:1=1", "all:", ":1"}) {
    expectUsageError({"--break", text}, "--break needs CALL[:N], not '" + text + "'");
  }
  for (const std::string text : {"all", "all:2", "all=", "all=-1", "all=1s", "3"}) {
    expectUsageError({"--delay", text}, "--delay needs CALL[:N]=SECONDS, not '" + text + "'");
  }
}

TEST(SimulatorLines, HaveTheTimeInFrontWithTimestamps) {
  const Start start{.program = kSimulatorProgram,
                    .arguments = {"--port", "0", "--in-memory", "--no-catalogue", "--timestamps"}};
  ProgramProcess process(start);
  const std::string line = process.readUntil("\n");
  EXPECT_TRUE(matches(line,
                      "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}[.][0-9]{3} "
                      "headend-simulator: ready on .*\n"))
      << line;
  process.signal(SIGTERM);
  EXPECT_EQ(process.finish().status, 0);
}

// ---- what it leaves

/// What is below /etc/korvel while the simulator runs there and afterwards, with a line between.
std::string filesOfARun(const std::string& options, const std::string& before = "") {
  const TemporaryFolder folder;
  const Start start{
      .program = HEADEND_SANDBOX_PROGRAM,
      .arguments = {
          "sh", "-c",
          "cd \"$2\"; place=/etc/korvel/conf/ControllerTask; rm -r /etc/korvel/conf\n" + before +
              "\nport=$(\"$1\" --ready-fd 3 " + options +
              " 3>&1 >log 2>&1 & echo $! >pid)\n"
              "find /etc/korvel -mindepth 1 -name '[^.]*' | sort; echo $port\n"
              "kill $(cat pid); while kill -0 $(cat pid); do sleep 0.02; done 2>/dev/null\n"
              "find /etc/korvel -mindepth 1 -name '[^.]*' | sort; mkdir -p $place",
          "sh", kSimulatorProgram, folder.path()}};
  return run(start).out;
}

const std::string kConf = "/etc/korvel/conf\n";
const std::string kPlace = kConf + "/etc/korvel/conf/ControllerTask\n";
const std::string kCatalogue = "/etc/korvel/conf/ControllerTask/ControllerTask.sqlite\n";
const std::string kState = "/etc/korvel/conf/ControllerTask/headend-simulator.json\n";

const std::string kOther = "/etc/korvel/conf/ControllerTask/other\n";

TEST(SimulatorEnd, RemovesWhatItMadeWithItsFolders) {
  EXPECT_EQ(filesOfARun(""), kPlace + kCatalogue + kState + "9190\n");
}

TEST(SimulatorEnd, LeavesWhatItMadeWithKeep) {
  const std::string all = kPlace + kCatalogue + kState;
  EXPECT_EQ(filesOfARun("--keep"), all + "9190\n" + all);
}

TEST(SimulatorEnd, LeavesFoldersAndFilesThatWereThere) {
  EXPECT_EQ(filesOfARun("", "mkdir -p $place/other"),
            kPlace + kCatalogue + kState + kOther + "9190\n" + kPlace + kOther);
}

TEST(SimulatorEnd, LeavesFilesThatOptionsName) {
  const std::string files = kPlace + "/etc/korvel/conf/ControllerTask/mine\n";
  EXPECT_EQ(filesOfARun("--no-catalogue --state $place/mine"), files + "9190\n" + files);
}

// ---- state file

TEST(SimulatorState, IsMadeInFoldersThatDoNotExistYet) {
  const TemporaryFolder folder;
  const std::string state = folder.file("a/b/state.json");
  const SimulatorProcess simulator(folder, {"--state", state});
  EXPECT_TRUE(std::filesystem::exists(state));
}

TEST(SimulatorState, InUseByAnotherSimulatorIsRefused) {
  const TemporaryFolder folder;
  const SimulatorProcess running(folder);
  const std::string refusal =
      "the state file " + folder.file("state.json") + " is in use by another process";
  expectRefusal(runWithState(folder.file("state.json")), refusal);
  setHeadendName(running, "the file is a new one now");
  expectRefusal(runWithState(folder.file("state.json")), refusal);
}

TEST(SimulatorState, DamagedFileIsRefusedAndKept) {
  const TemporaryFolder folder;
  const std::string path = folder.file("state.json");
  SimulatorProcess(folder).end();
  const std::string whole = contentOf(path);
  for (const std::string& damaged :
       {std::string(), whole.substr(0, whole.size() / 2), whole.substr(0, whole.size() - 1),
        whole + "}", std::string("{}"), std::string("SQLite format 3"),
        // A file in which the console has saved a configuration.
        std::string(R"({"1":{"rec":{}},"2":{"rec":{"1":{"i32":4}}}})")}) {
    writeFile(path, damaged);
    const Outcome outcome = runWithState(path);
    EXPECT_EQ(outcome.status, 1) << damaged;
    EXPECT_EQ(outcome.out, "");
    const std::string begin =
        "headend-simulator: the state file " + path + " is damaged or no state file (";
    EXPECT_EQ(outcome.err.substr(0, begin.size()), begin);
    EXPECT_NE(outcome.err.find("); move it away to begin with a new headend\n"), std::string::npos);
    EXPECT_EQ(contentOf(path), damaged);
  }
}

TEST(SimulatorState, ThatIsNoRegularFileIsRefused) {
  const TemporaryFolder folder;
  mkfifo(folder.file("fifo").c_str(), 0600);
  for (const std::string& path :
       {folder.file(""), folder.file("fifo"), std::string("/dev/full"), std::string("/dev/null")}) {
    expectRefusal(runWithState(path), "cannot use " + path + ": it is no regular file");
  }
}

TEST(SimulatorState, ThatMayNotBeReadIsRefused) {
  const TemporaryFolder folder;
  const std::string path = folder.file("state.json");
  writeFile(path, "secret");
  chmod(path.c_str(), 0);
  const Start start{.program = kSimulatorProgram,
                    .arguments = {"--port", "0", "--no-catalogue", "--state", path}};
  expectRefusal(run(withoutCapabilities("-dac_override,-dac_read_search", start)),
                "cannot open " + path + ": Permission denied");
}

constexpr char kWithoutState[] = "; --state names another file, --in-memory does without one";

TEST(SimulatorState, WhereThereIsNoRoomIsRefused) {
  const TemporaryFolder folder;
  const std::string path = folder.file("state.json");
  const Start start{
      .program = "sh",
      .arguments = {"-c", "trap '' XFSZ; ulimit -S -f 0; exec \"$@\"", "sh", kSimulatorProgram,
                    "--port", "0", "--no-catalogue", "--state", path}};
  expectRefusal(run(start), "cannot write " + path + ": File too large" + kWithoutState);
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>());
}

TEST(SimulatorState, WhereNoFileCanBeIsRefused) {
  const TemporaryFolder folder;
  writeFile(folder.file("file"), "");
  const std::string path = folder.file("file/state.json");
  expectRefusal(runWithState(path), "cannot write " + path + ": Not a directory" + kWithoutState);
}

TEST(SimulatorState, ThatCannotBeStoredIsNotTakenOver) {
  const TemporaryFolder folder;
  SimulatorProcess simulator(folder, {"--state", folder.file("state/file.json")});
  const std::string state = contentOf(folder.file("state/file.json"));
  // Another folder stands where its folder was.
  std::filesystem::rename(folder.file("state"), folder.file("away"));
  writeFile(folder.file("state"), "");
  EXPECT_THROW(setHeadendName(simulator, "lost"), apache::thrift::TApplicationException);
  EXPECT_EQ(simulator.nextLine(), "getHeadendConfig: 0 RF entries, 0 IP entries, modulation COFDM");
  EXPECT_EQ(simulator.nextLine(), "setHeadendConfig: refused, cannot write " +
                                      folder.file("state/file.json") + ": Not a directory");
  EXPECT_EQ(headendName(simulator), "Simulated headend");
  EXPECT_EQ(contentOf(folder.file("away/file.json")), state);
}

TEST(SimulatorState, HasTheModeThatTheMaskAllows) {
  const TemporaryFolder folder;
  const mode_t before = umask(027);
  const SimulatorProcess simulator(folder);
  umask(before);
  struct stat file {};
  ASSERT_EQ(stat(folder.file("state.json").c_str(), &file), 0);
  EXPECT_EQ(file.st_mode & 07777U, 0640U);
}

TEST(SimulatorState, IsInNoFileWithInMemory) {
  const TemporaryFolder folder;
  const SimulatorProcess simulator(folder, {"--in-memory"});
  setHeadendName(simulator, "remembered");
  EXPECT_EQ(headendName(simulator), "remembered");
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"catalogue.sqlite"});
}

TEST(SimulatorState, HoldsTheLastChangeOrTheOneBeforeWhenKilled) {
  const TemporaryFolder folder;
  for (int round = 0; round < 5; ++round) {
    SimulatorProcess simulator(folder);
    std::atomic<int> answered = 0;
    std::thread changes([&] {
      try {
        for (int name = 1;; ++name) {
          setHeadendName(simulator, std::to_string(name));
          answered = name;
        }
      } catch (const apache::thrift::TException&) {
        // Killed.
      }
    });
    while (answered < 3 + round) {
      std::this_thread::yield();
    }
    simulator.signal(SIGKILL);
    changes.join();
    EXPECT_EQ(simulator.finish().signal, SIGKILL);
    SimulatorProcess again(folder);
    const int name = std::stoi(headendName(again));
    EXPECT_GE(name, answered);
    EXPECT_LE(name, answered + 1);
    again.end();
  }
}

}  // namespace
}  // namespace lineup::test

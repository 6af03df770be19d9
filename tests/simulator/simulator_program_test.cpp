// The simulator as a program: options, errors, files, signals, clients that misbehave.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <thread>

#include "tests/simulator/simulator_process.h"

namespace lineup::test {
namespace {

namespace hub_module = korvel::thrift::hub_module;

constexpr const char* kHint = "Try 'headend-simulator --help' for more information.\n";

void expectRefusal(const Outcome& outcome, const std::string& message) {
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "headend-simulator: " + message + "\n");
}

void expectUsageError(const std::vector<std::string>& arguments, const std::string& message) {
  const Outcome outcome = runSimulator(arguments);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "headend-simulator: " + message + "\n" + kHint);
}

/// A connection to the simulator with nothing behind it.
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
        "--without-input NAME", "--not-ready SECONDS", "--ready-fd N", "--help", "--version"}) {
    EXPECT_NE(outcome.out.find(std::string("\n  ") + option + " "), std::string::npos) << option;
  }
}

TEST(SimulatorOptions, VersionIsTheProjects) {
  const Outcome outcome = runSimulator({"--version"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "headend-simulator " PROJECT_VERSION "\n");
  EXPECT_EQ(outcome.err, "");
}

TEST(SimulatorOptions, UnknownOptionIsRefusedWithAHint) {
  expectUsageError({"--nonsense"}, "unknown option '--nonsense'");
  expectUsageError({"-x"}, "unknown option '-x'");
  expectUsageError({"--help=yes"}, "unknown option '--help=yes'");
}

TEST(SimulatorOptions, MissingArgumentIsRefused) {
  expectUsageError({"--port"}, "option '--port' needs an argument");
}

TEST(SimulatorOptions, OperandIsRefused) {
  expectUsageError({"catalogue.sqlite"}, "unexpected argument 'catalogue.sqlite'");
}

TEST(SimulatorOptions, NumberOutOfRangeIsRefused) {
  expectUsageError({"--port", "65536"}, "--port needs a number from 0 to 65535, not '65536'");
  expectUsageError({"--port", "-1"}, "--port needs a number from 0 to 65535, not '-1'");
  expectUsageError({"--port", "91x"}, "--port needs a number from 0 to 65535, not '91x'");
  expectUsageError({"--not-ready", ""}, "--not-ready needs a number from 0 to 86400, not ''");
}

TEST(SimulatorOptions, DescriptorThatIsNotOpenIsRefused) {
  expectUsageError({"--ready-fd", "77"}, "--ready-fd needs an open file descriptor, not '77'");
}

TEST(SimulatorOptions, EmptyPathIsRefused) {
  expectUsageError({"--state", ""}, "--state needs a file name");
  expectUsageError({"--catalogue="}, "--catalogue needs a file name");
}

TEST(SimulatorOptions, InputThatNoHeadendHasIsRefused) {
  for (const std::string name : {"SAT9", "sat1", "TDTALL", "SATALL", ""}) {
    expectUsageError({"--without-input", name},
                     "--without-input needs TDT1, TDT2 or SAT1 to SAT8, not '" + name + "'");
  }
}

// ---- port

TEST(SimulatorPort, PortInUseIsRefusedAndNothingIsTouched) {
  const TemporaryFolder folder;
  const SimulatorProcess running(folder);
  const std::string state = readFile(folder.file("state.json"));
  const std::string port = std::to_string(running.port());
  expectRefusal(
      runSimulator({"--port", port, "--state", folder.file("other.json"), "--catalogue",
                    folder.file("other.sqlite")}),
      "cannot listen on 127.0.0.1 port " + port + ": Could not bind: Address already in use");
  EXPECT_EQ(namesIn(folder), (std::vector<std::string>{"catalogue.sqlite", "state.json"}));
  EXPECT_EQ(readFile(folder.file("state.json")), state);
  EXPECT_EQ(headendName(running), "Simulated headend");
}

TEST(SimulatorPort, IsFreeAtOnceAfterAnEndWithOpenConnections) {
  const TemporaryFolder folder;
  SimulatorProcess first(folder);
  Connection connection = first.connect();
  hub_module::HeadendConfig config;
  connection->getHeadendConfig(config);
  first.signal(SIGTERM);
  EXPECT_EQ(first.finish().status, 0);
  const SimulatorProcess second(folder, {}, first.port());
  EXPECT_EQ(second.port(), first.port());
  EXPECT_EQ(headendName(second), "Simulated headend");
}

// ---- readiness

TEST(SimulatorReadiness, IsWrittenToADescriptorWhichIsClosedThen) {
  const TemporaryFolder folder;
  Start start;
  start.program = "sh";
  start.folder = folder.path();
  // The substitution ends when nobody has the pipe open any more.
  start.arguments = {"-c",
                     "port=$(\"$1\" --port 0 --state state --no-catalogue --ready-fd 3 3>&1 >log & "
                     "echo $! >pid); cat log; echo \"$port\"; kill $(cat pid)",
                     "sh", kSimulatorProgram};
  const Outcome outcome = run(start);
  const std::string ready = "headend-simulator: ready on 127.0.0.1:";
  ASSERT_EQ(outcome.out.substr(0, ready.size()), ready);
  const std::string port = outcome.out.substr(ready.size(), outcome.out.find('\n') - ready.size());
  EXPECT_EQ(outcome.out, ready + port + "\n" + port + "\n");
}

TEST(SimulatorReadiness, DescriptorIsClosedWithoutALineWhenTheStartFails) {
  Start start;
  start.program = "sh";
  start.arguments = {"-c",
                     "\"$1\" --port 0 --state /dev/null --ready-fd 3 3>&1 >/dev/null 2>&1 | wc -c",
                     "sh", kSimulatorProgram};
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
  EXPECT_EQ(namesIn(folder), (std::vector<std::string>{"catalogue.sqlite", "state.json"}));
  EXPECT_EQ(headendName(SimulatorProcess(folder, {}, simulator.port())), "kept");
}

INSTANTIATE_TEST_SUITE_P(TermAndInt, SimulatorSignals, testing::Values(SIGTERM, SIGINT));

TEST(SimulatorSignal, EndsItWhileClientsStall) {
  const TemporaryFolder folder;
  SimulatorProcess simulator(folder);
  const RawConnection silent(simulator.port());
  const RawConnection halfway(simulator.port());
  halfway.send(std::string("\0\0\1\0half a frame", 16));
  EXPECT_EQ(headendName(simulator), "Simulated headend");
  simulator.signal(SIGTERM);
  EXPECT_EQ(simulator.finish().status, 0);
}

// ---- clients

TEST(SimulatorClients, ThatStallBlockNobody) {
  const TemporaryFolder folder;
  const SimulatorProcess simulator(folder);
  const RawConnection silent(simulator.port());
  const RawConnection halfway(simulator.port());
  halfway.send(std::string("\0\0\1\0half a frame", 16));
  for (int call = 0; call < 20; ++call) EXPECT_EQ(headendName(simulator), "Simulated headend");
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

// ---- state file

TEST(SimulatorState, IsMadeInFoldersThatDoNotExistYet) {
  const TemporaryFolder folder;
  const std::string state = folder.file("a/b/state.json");
  SimulatorProcess simulator(folder, {"--state", state});
  EXPECT_TRUE(std::filesystem::exists(state));
  simulator.signal(SIGTERM);
  simulator.finish();
}

TEST(SimulatorState, InUseByAnotherSimulatorIsRefused) {
  const TemporaryFolder folder;
  const SimulatorProcess running(folder);
  const std::string refusal =
      "the state file " + folder.file("state.json") + " is in use by another process";
  const std::vector<std::string> other{"--port", "0", "--no-catalogue", "--state",
                                       folder.file("state.json")};
  expectRefusal(runSimulator(other), refusal);
  setHeadendName(running, "the file is a new one now");
  expectRefusal(runSimulator(other), refusal);
}

TEST(SimulatorState, DamagedFileIsRefusedAndKept) {
  const TemporaryFolder folder;
  const std::string path = folder.file("state.json");
  {
    SimulatorProcess simulator(folder);
    simulator.signal(SIGTERM);
    simulator.finish();
  }
  const std::string whole = readFile(path);
  for (const std::string& damaged :
       {std::string(), whole.substr(0, whole.size() / 2), whole.substr(0, whole.size() - 1),
        whole + "}", std::string("{}"), std::string("SQLite format 3"),
        // A file in which the console has saved a configuration.
        std::string(R"({"1":{"rec":{}},"2":{"rec":{"1":{"i32":4}}}})")}) {
    writeFile(path, damaged);
    const Outcome outcome = runSimulator({"--port", "0", "--no-catalogue", "--state", path});
    EXPECT_EQ(outcome.status, 1) << damaged;
    EXPECT_EQ(outcome.out, "");
    const std::string begin =
        "headend-simulator: the state file " + path + " is damaged or no state file (";
    EXPECT_EQ(outcome.err.substr(0, begin.size()), begin);
    EXPECT_NE(outcome.err.find("); move it away to begin with a new headend\n"), std::string::npos);
    EXPECT_EQ(readFile(path), damaged);
  }
}

TEST(SimulatorState, ThatIsNoRegularFileIsRefused) {
  const TemporaryFolder folder;
  mkfifo(folder.file("fifo").c_str(), 0600);
  for (const std::string& path :
       {folder.file(""), folder.file("fifo"), std::string("/dev/full"), std::string("/dev/null")}) {
    expectRefusal(runSimulator({"--port", "0", "--no-catalogue", "--state", path}),
                  "cannot use " + path + ": it is no regular file");
  }
}

TEST(SimulatorState, ThatMayNotBeReadIsRefused) {
  const TemporaryFolder folder;
  const std::string path = folder.file("state.json");
  writeFile(path, "secret");
  chmod(path.c_str(), 0);
  Start start;
  start.program = kSimulatorProgram;
  start.arguments = {"--port", "0", "--no-catalogue", "--state", path};
  expectRefusal(run(withoutPowers("-dac_override,-dac_read_search", start)),
                "cannot open " + path + ": Permission denied");
}

TEST(SimulatorState, WhereThereIsNoRoomIsRefused) {
  const TemporaryFolder folder;
  const std::string path = folder.file("state.json");
  Start start;
  start.program = "sh";
  start.arguments = {"-c",
                     "trap '' XFSZ; ulimit -S -f 0; exec \"$@\"",
                     "sh",
                     kSimulatorProgram,
                     "--port",
                     "0",
                     "--no-catalogue",
                     "--state",
                     path};
  expectRefusal(run(start), "cannot write " + path + ": File too large");
  EXPECT_EQ(namesIn(folder), std::vector<std::string>());
}

TEST(SimulatorState, WhereNoFileCanBeIsRefused) {
  const TemporaryFolder folder;
  writeFile(folder.file("file"), "");
  const std::string path = folder.file("file/state.json");
  expectRefusal(runSimulator({"--port", "0", "--no-catalogue", "--state", path}),
                "cannot write " + path + ": Not a directory");
}

TEST(SimulatorState, ThatCannotBeStoredIsNotTakenOver) {
  const TemporaryFolder folder;
  SimulatorProcess simulator(folder);
  const std::string state = readFile(folder.file("state.json"));
  // A folder where the new file is to be written.
  std::filesystem::create_directory(folder.file("state.json.headend-simulator-new"));
  EXPECT_THROW(setHeadendName(simulator, "lost"), apache::thrift::TApplicationException);
  EXPECT_EQ(simulator.nextLine(), "getHeadendConfig: 0 RF entries, 0 IP entries, modulation COFDM");
  EXPECT_EQ(simulator.nextLine(), "setHeadendConfig: refused, cannot write " +
                                      folder.file("state.json") + ": Is a directory");
  EXPECT_EQ(headendName(simulator), "Simulated headend");
  EXPECT_EQ(readFile(folder.file("state.json")), state);
}

TEST(SimulatorState, SurvivesAnUnfinishedWrite) {
  const TemporaryFolder folder;
  SimulatorProcess first(folder);
  setHeadendName(first, "kept");
  first.signal(SIGKILL);
  first.finish();
  writeFile(folder.file("state.json.headend-simulator-new"), "{\"101\":{\"rec\":");
  SimulatorProcess second(folder);
  EXPECT_EQ(headendName(second), "kept");
  setHeadendName(second, "written over it");
  EXPECT_EQ(namesIn(folder), (std::vector<std::string>{"catalogue.sqlite", "state.json"}));
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
    while (answered < 3 + round) std::this_thread::yield();
    simulator.signal(SIGKILL);
    changes.join();
    EXPECT_EQ(simulator.finish().signal, SIGKILL);
    SimulatorProcess again(folder);
    const int name = std::stoi(headendName(again));
    EXPECT_GE(name, answered);
    EXPECT_LE(name, answered + 1);
    again.signal(SIGTERM);
    again.finish();
  }
}

}  // namespace
}  // namespace lineup::test

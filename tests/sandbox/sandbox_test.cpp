// The sandbox, as a command sees it. The way without namespaces is tried in a sandbox with
// namespaces, which plays the machine.

#include "tests/support/sandbox.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/program_process.h"

namespace lineup::test {
namespace {

Start sandboxed(const std::vector<std::string>& command) {
  return {.program = HEADEND_SANDBOX_PROGRAM,
          .arguments = command,
          .environment = {{"HEADEND_SANDBOX", std::nullopt},
                          {"SANDBOX", HEADEND_SANDBOX_PROGRAM},
                          {"FOLDER", kCatalogueFolder},
                          {"CATALOGUE", kCataloguePath}}};
}

Start sandboxedShell(const std::string& script) {
  return sandboxed({"sh", "-c", script});
}

std::string networkInside() {
  return run(sandboxed({"readlink", "/proc/self/ns/net"})).out;
}

bool namespacesAreAllowed() {
  return networkInside() != std::filesystem::read_symlink("/proc/self/ns/net").string() + "\n";
}

/// A script for a machine of its own, with an empty /etc/korvel, on which it is root.
Start machine(const std::string& script) {
  std::vector<std::string> command = {"sh", "-c",
                                      "unset HEADEND_SANDBOX; rm -r /etc/korvel/conf\n" + script};
  if (geteuid() != 0) {
    command.insert(command.begin(), {"unshare", "--user", "--map-root-user"});
  }
  return sandboxed(command);
}

constexpr const char* kNotice = "waiting for another simulated headend on this machine to end\n";

/// What a command wrote to standard error; without namespaces it may have had to wait for its turn.
std::string errorsOf(const Outcome& outcome) {
  const std::string notice = kNotice;
  return outcome.err.substr(outcome.err.starts_with(notice) ? notice.size() : 0);
}

const std::string kPort = std::to_string(kControllerPort);

const std::string kListener =
    "/usr/bin/python3 -c 'import socket\n"
    "server = socket.create_server((\"127.0.0.1\", " +
    kPort +
    "))\n"
    "print(\"up\", flush=True)\n"
    "input()'";

/// What needs namespaces to be tried.
class OwnNamespaces : public testing::Test {
 protected:
  void SetUp() override {
    if (!namespacesAreAllowed()) {
      GTEST_SKIP() << "namespaces are forbidden here";
    }
  }
};

/// What needs namespaces of users too, which no root entered by chroot alone may create.
class OwnUsers : public OwnNamespaces {
 protected:
  void SetUp() override {
    OwnNamespaces::SetUp();
    if (run({.program = "unshare", .arguments = {"--user", "--map-root-user", "true"}}).status !=
        0) {
      GTEST_SKIP() << "namespaces of users are forbidden here";
    }
  }
};

class MachinesOwn : public OwnNamespaces {};

TEST(Sandbox, RunsACommandAndEndsWithItsStatus) {
  const Outcome outcome = run(sandboxedShell("cat; echo oops >&2; exit 7"), "text");
  EXPECT_EQ(outcome.out, "text");
  EXPECT_EQ(errorsOf(outcome), "oops\n");
  EXPECT_EQ(outcome.status, 7);
}

TEST(Sandbox, EndsWith128AndTheSignalThatEndedTheCommand) {
  // To a shell, be it by the signal itself or by the status.
  Start start = sandboxed({"-c", "$SANDBOX sh -c 'kill -KILL $$'; echo $?"});
  start.program = "sh";
  EXPECT_EQ(run(start).out, std::to_string(128 + SIGKILL) + "\n");
}

TEST(Sandbox, NamesACommandThatIsMissingOrNoProgram) {
  const Outcome missing = run(sandboxed({"/nonesuch"}));
  EXPECT_NE(missing.err.find("/nonesuch"), std::string::npos) << missing.err;
  EXPECT_EQ(missing.status, 127);
  const Outcome folder = run(sandboxed({"/etc"}));
  EXPECT_NE(folder.err.find("/etc"), std::string::npos) << folder.err;
  EXPECT_EQ(folder.status, 126);
}

TEST(Sandbox, ExplainsItsUse) {
  const Outcome asked = run(sandboxed({"--help"}));
  EXPECT_EQ(asked.out.substr(0, 45), "Usage: headend-sandbox COMMAND [ARG]...\nRun C");
  EXPECT_EQ(asked.status, 0);
  for (const std::vector<std::string>& wrong :
       {std::vector<std::string>{}, {"-x"}, {"-x", "true"}}) {
    const Outcome outcome = run(sandboxed(wrong));
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, asked.out);
    EXPECT_EQ(outcome.status, 125);
  }
}

TEST(Sandbox, HasThePortAndTheFolderThatTheConsoleUses) {
  EXPECT_NE(run(sandboxed({"--help"}))
                .out.find("port " + kPort + " of " + kControllerAddress + " and the folder\n" +
                          kCatalogueFolder + " are its own"),
            std::string::npos);
}

TEST(Sandbox, RefusesAnUnknownWay) {
  Start start = sandboxed({"true"});
  start.environment["HEADEND_SANDBOX"] = "other";
  const Outcome outcome = run(start);
  EXPECT_EQ(outcome.err,
            "headend-sandbox: HEADEND_SANDBOX is \"other\": use \"shared\" or leave it unset\n");
  EXPECT_EQ(outcome.status, 125);
}

TEST(Sandbox, HasAnEmptyCatalogueFolderToWriteTo) {
  const Outcome outcome = run(sandboxedShell("ls -A $FOLDER; echo data >$CATALOGUE; ls $FOLDER"));
  EXPECT_EQ(outcome.out, "ControllerTask.sqlite\n");
  EXPECT_EQ(outcome.status, 0);
}

TEST(Sandbox, HasThePortFree) {
  EXPECT_EQ(run(sandboxedShell(kListener), "\n").out, "up\n");
}

TEST(Sandbox, StaysInTheSandboxItIsStartedIn) {
  EXPECT_EQ(run(sandboxedShell("echo data >$CATALOGUE; $SANDBOX cat $CATALOGUE")).out, "data\n");
}

TEST(Sandbox, KeepsTheWorkingFolder) {
  Start start = sandboxed({"pwd", "-P"});
  start.folder = "/usr/share";
  EXPECT_EQ(run(start).out, "/usr/share\n");
}

TEST(Sandbox, PassesTerminationOnToTheCommand) {
  ProgramProcess process(
      sandboxedShell("trap 'exit 3' TERM; echo up; while :; do sleep 0.01; done"));
  process.readUntil("up\n");
  process.signal(SIGTERM);
  EXPECT_EQ(process.finish().status, 3);
}

TEST(Sandbox, TakesTheCommandWithItWhenItIsKilled) {
  ProgramProcess process(sandboxedShell("echo up; exec sleep 1000"));
  process.readUntil("up\n");
  process.signal(SIGKILL);
  EXPECT_EQ(process.finish().signal, SIGKILL);
}

TEST(Sandbox, LeavesCtrlCToTheCommand) {
  Start start =
      sandboxedShell("trap 'echo caught; exit 5' INT; echo up; while :; do sleep 0.01; done");
  start.terminal = true;
  ProgramProcess process(start);
  process.readUntil("up");
  process.send("\x03");
  EXPECT_EQ(process.readUntil("caught\r\n"), "\r\n^Ccaught\r\n");
  EXPECT_EQ(process.finish().status, 5);
}

TEST(Sandbox, AllowsJobControl) {
  Start start = sandboxed({"bash", "--norc", "--noprofile", "-i"});
  start.terminal = true;
  start.columns = 300;
  ProgramProcess process(start);
  process.send(
      "sh -c 'trap \"echo resu\"med CONT; echo runn\"\"ing; while :; do read line; done'\n");
  process.readUntil("running");
  process.send("\x1a");
  process.readUntil("Stopped");
  process.send("fg\n");
  process.readUntil("resumed");
  process.send("\x03");
  process.readUntil("bash-");
  process.send("echo status=$?\n");
  process.readUntil("status=130");
  process.send("exit 4\n");
  EXPECT_EQ(process.finish().status, 4);
}

TEST_F(OwnNamespaces, StandSideBySide) {
  ProgramProcess first(sandboxedShell(kListener));
  first.readUntil("up\n");
  EXPECT_EQ(run(sandboxedShell(kListener), "\n").out, "up\n");
  EXPECT_EQ(first.finish().status, 1);  // the listener's input has ended
}

TEST_F(OwnNamespaces, LeaveTheMachinesEtcAsItWas) {
  const bool before = std::filesystem::exists(kCatalogueFolder);
  const Outcome outcome = run(sandboxedShell(
      "test -s /etc/passwd; echo $?; echo data >$CATALOGUE; echo ours >/etc/lineup-test; "
      "cat $CATALOGUE /etc/lineup-test"));
  EXPECT_EQ(outcome.out, "0\ndata\nours\n");
  EXPECT_FALSE(std::filesystem::exists("/etc/lineup-test"));
  EXPECT_FALSE(std::filesystem::exists(kCataloguePath));
  EXPECT_EQ(std::filesystem::exists(kCatalogueFolder), before);
}

TEST_F(OwnNamespaces, KeepTheUser) {
  EXPECT_EQ(run(sandboxed({"id", "-u"})).out, std::to_string(geteuid()) + "\n");
}

TEST_F(OwnNamespaces, NeedNoCapSysAdmin) {
  const std::string power = "-sys_admin";
  if (run(withoutCapabilities(power, {.program = "unshare", .arguments = {"--user", "true"}}))
          .status != 0) {
    GTEST_SKIP() << "namespaces are forbidden to other users here";
  }
  const Outcome outcome = run(withoutCapabilities(
      power, sandboxedShell("readlink /proc/self/ns/user; id -u; echo data >$CATALOGUE")));
  const std::string machines = std::filesystem::read_symlink("/proc/self/ns/user").string();
  EXPECT_NE(outcome.out.substr(0, machines.size()), machines);
  EXPECT_EQ(outcome.out.substr(outcome.out.find('\n')), "\n" + std::to_string(geteuid()) + "\n");
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.status, 0);
}

TEST_F(OwnUsers, AreNotNeededByRootWhereTheyAreForbidden) {
  const Outcome outcome = run(machine(
      "exec unshare --user --map-root-user sh -c '\n"
      "for kind in user mnt net; do echo 0 >/proc/sys/user/max_${kind}_namespaces; done\n"
      "test $(readlink /proc/self/ns/net) = $($SANDBOX readlink /proc/self/ns/net) && echo same\n"
      "$SANDBOX ls -d $FOLDER; ls -A /etc/korvel'"));
  EXPECT_EQ(outcome.out, "same\n" + kCatalogueFolder + "\n");
  EXPECT_EQ(outcome.err, "");
}

TEST_F(OwnUsers, AreNeededByOtherUsers) {
  const Outcome outcome =
      run(machine("exec unshare --user --map-root-user sh -c '\n"
                  "echo 1 >/proc/sys/user/max_user_namespaces\n"
                  "exec unshare --user --map-user=1000 $SANDBOX true'"));
  EXPECT_EQ(
      outcome.err,
      "headend-sandbox: a simulated headend needs namespaces of its own (unshare: unshare failed: "
      "No space left on device): allow them to this user, or run as root\n");
  EXPECT_EQ(outcome.status, 125);
}

TEST_F(MachinesOwn, FolderIsRemovedWithAllThatWasWritten) {
  const Outcome outcome =
      run(machine("export HEADEND_SANDBOX=shared\n"
                  "$SANDBOX sh -c 'ls -A $FOLDER; touch $CATALOGUE $FOLDER/other; exit 6'\n"
                  "echo $?; ls -A /etc/korvel"));
  EXPECT_EQ(outcome.out, "6\n");
  EXPECT_EQ(outcome.err, "");
}

TEST_F(MachinesOwn, CommandThatEndsByItselfAsCtrlCComesGivesItsStatus) {
  // Which comes first is a matter of luck.
  const Outcome outcome =
      run(machine("export HEADEND_SANDBOX=shared\n"
                  "for one in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16; do\n"
                  "  $SANDBOX sh -c 'kill -INT $PPID; exit 5'; echo $?\n"
                  "done | uniq"));
  EXPECT_EQ(outcome.out, "5\n");
}

TEST_F(MachinesOwn, FolderThatWasThereStays) {
  const Outcome outcome =
      run(machine("mkdir -p $FOLDER\n"
                  "export HEADEND_SANDBOX=shared\n"
                  "$SANDBOX touch $CATALOGUE $CATALOGUE-journal\n"
                  "find /etc/korvel -mindepth 1"));
  EXPECT_EQ(outcome.out, "/etc/korvel/conf\n" + kCatalogueFolder + "\n");
  EXPECT_EQ(outcome.err, "");
}

TEST_F(MachinesOwn, FilesAreNotOverwritten) {
  const Outcome outcome =
      run(machine("mkdir -p $FOLDER; echo data >$CATALOGUE\n"
                  "HEADEND_SANDBOX=shared $SANDBOX echo ran\n"
                  "echo $?; cat $CATALOGUE; ls -A /etc/korvel"));
  EXPECT_EQ(outcome.out, "125\ndata\nconf\n");
  EXPECT_EQ(outcome.err, "headend-sandbox: " + kCatalogueFolder +
                             " holds files, which are not overwritten: move them away\n");
}

TEST_F(MachinesOwn, PortInUseIsRefused) {
  ProgramProcess process(
      machine("{ read go; HEADEND_SANDBOX=shared $SANDBOX echo ran; echo $? >&2\n"
              "  ls -A /etc/korvel; echo; } | " +
              kListener));
  process.readUntil("up\n");
  process.send("go\n");
  process.readErrorsUntil("125\n");
  const Outcome outcome = process.finish();
  EXPECT_EQ(outcome.out, "up\n");
  EXPECT_EQ(outcome.err, "headend-sandbox: 127.0.0.1:" + kPort +
                             " is in use: stop the program that listens there\n125\n");
}

TEST_F(MachinesOwn, SandboxesComeOneAfterAnother) {
  ProgramProcess process(machine(
      "export HEADEND_SANDBOX=shared; mkfifo /etc/korvel/end\n"
      "$SANDBOX sh -c 'touch $CATALOGUE; echo first; read line </etc/korvel/end; echo ended' &\n"
      "read line\n"
      "$SANDBOX sh -c 'ls -A $FOLDER; echo second' &\n"
      "read line; echo >/etc/korvel/end; wait; ls -A /etc/korvel"));
  process.readUntil("first\n");
  process.send("start the second\n");
  process.readErrorsUntil(kNotice);
  process.send("end the first\n");
  const Outcome outcome = process.finish();
  EXPECT_EQ(outcome.out, "first\nended\nsecond\nend\n");
}

TEST_F(MachinesOwn, KilledSandboxTakesItsCommandWithItAndLeavesTheRestToTheNext) {
  // The command has the pipe open until its end.
  const Outcome outcome =
      run(machine("export HEADEND_SANDBOX=shared; exec 2>/dev/null\n"
                  "$SANDBOX sh -c 'touch $CATALOGUE; kill -KILL $PPID; exec sleep 1000' | cat\n"
                  "$SANDBOX ls -A $FOLDER; ls -A /etc/korvel"));
  EXPECT_EQ(outcome.out, "");
}

TEST(SandboxedTestProgram, ListsTestsWithoutASandbox) {
  Start start{.program = SANDBOXED_TEST_PROGRAM, .environment = {{"HEADEND_SANDBOX", "other"}}};
  const Outcome refused = run(start);
  EXPECT_EQ(refused.err,
            "headend-sandbox: HEADEND_SANDBOX is \"other\": use \"shared\" or leave it unset\n");
  EXPECT_EQ(refused.status, 125);
  start.arguments = {"--gtest_list_tests"};
  EXPECT_EQ(run(start).status, 0);
}

TEST_F(MachinesOwn, TestProcessesComeOneAfterAnother) {
  Start start = machine(
      "export HEADEND_SANDBOX=shared; jobs=; for one in 1 2 3 4; do $TEST & jobs=\"$jobs $!\"; "
      "done; "
      "failed=0; for job in $jobs; do wait $job || failed=1; done; "
      "ls -A /etc/korvel; exit $failed");
  start.environment["TEST"] = SANDBOXED_TEST_PROGRAM;
  const Outcome outcome = run(start);
  EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.err;
}

}  // namespace
}  // namespace lineup::test

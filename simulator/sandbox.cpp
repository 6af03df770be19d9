#include "simulator/sandbox.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <net/if.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <iostream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace lineup {
namespace {

namespace fs = std::filesystem;

/// Passes on the result of a system call; a failed one is thrown, with `what` it was for.
int check(int result, const std::string& what) {
  if (result < 0) {
    throw std::system_error(errno, std::generic_category(), what);
  }
  return result;
}

// --- Namespaces ---

void writeFile(const char* path, const std::string& text) {
  const int file = check(open(path, O_WRONLY | O_CLOEXEC), path);
  const ssize_t written = write(file, text.data(), text.size());
  const int error = errno;
  close(file);
  errno = error;
  check(written < 0 ? -1 : 0, path);
}

/// Root needs no user namespace and keeps its reach over everybody's files; other users need one,
/// in which they stay who they are.
void leaveMachineNamespaces() {
  constexpr int kOwn = CLONE_NEWNS | CLONE_NEWNET;
  if (unshare(kOwn) == 0) {
    return;
  }
  const std::string user = std::to_string(geteuid());
  const std::string group = std::to_string(getegid());
  check(unshare(kOwn | CLONE_NEWUSER), "unshare");
  writeFile("/proc/self/setgroups", "deny");
  writeFile("/proc/self/uid_map", user + " " + user + " 1");
  writeFile("/proc/self/gid_map", group + " " + group + " 1");
}

void raiseLoopback() {
  const int socketFile = check(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0), "socket");
  ifreq request{};
  std::strncpy(request.ifr_name, "lo", IFNAMSIZ - 1);
  request.ifr_flags = IFF_UP;
  const int result = ioctl(socketFile, SIOCSIFFLAGS, &request);
  close(socketFile);
  check(result, "raise the loopback interface");
}

void mountOver(const char* folder, const char* type, const char* options) {
  check(mount(type, folder, type, 0, options), std::string("mount ") + type + " on " + folder);
}

/// Covers /etc with a writable copy, and in it /etc/korvel with an empty folder.
void mountOwnEtc() {
  check(mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr), "make the mounts private");
  const int here = check(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC), "open the working folder");
  // The layers live on a file system mounted on /etc itself, and so are covered by what they make
  // up; the machine's /etc below it can still be reached as the working folder.
  check(chdir("/etc"), "/etc");
  mountOver("/etc", "tmpfs", "mode=755");
  fs::create_directory("/etc/upper");
  fs::create_directory("/etc/work");
  mountOver("/etc", "overlay", "lowerdir=.,upperdir=/etc/upper,workdir=/etc/work,userxattr");
  check(fchdir(here), "return to the working folder");
  close(here);
  fs::create_directory("/etc/korvel");
  mountOver("/etc/korvel", "tmpfs", "mode=755");
  fs::create_directories(kCatalogueFolder);
}

void enterNamespaces() {
  leaveMachineNamespaces();
  raiseLoopback();
  mountOwnEtc();
}

/// Why this machine refuses a sandbox in namespaces, or an empty text. Tried in a child process,
/// since a refusal halfway could not be undone.
std::string refusalOfNamespaces() {
  const std::string allowed = "allowed";
  std::array<int, 2> ends{};
  check(pipe2(ends.data(), O_CLOEXEC), "pipe");
  const pid_t child = check(fork(), "fork");
  if (child == 0) {
    std::string answer = allowed;
    try {
      enterNamespaces();
    } catch (const std::exception& error) {
      answer = error.what();
    }
    _exit(write(ends[1], answer.data(), answer.size()) < 0 ? 1 : 0);
  }
  close(ends[1]);
  std::array<char, 1000> buffer{};
  const ssize_t length = read(ends[0], buffer.data(), buffer.size());
  close(ends[0]);
  waitpid(child, nullptr, 0);
  if (length <= 0) {
    return "the process that tried was killed";  // GCOVR_EXCL_LINE: for want of memory, say
  }
  const std::string answer(buffer.data(), static_cast<size_t>(length));
  return answer == allowed ? "" : answer;
}

// --- The machine's own port and folder ---

/// Takes the lock that the processes in the machine's own place hold one after another. It is on a
/// folder that is always there, so that no lock file stays behind.
int waitForTurn() {
  const int lock = check(open("/etc", O_RDONLY | O_DIRECTORY | O_CLOEXEC), "/etc");
  if (flock(lock, LOCK_EX | LOCK_NB) != 0) {
    std::cerr << "waiting for another simulated headend on this machine to end" << std::endl;
    check(flock(lock, LOCK_EX), "lock /etc");
  }
  return lock;
}

void requireFreePort() {
  const int listener = check(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket");
  const int on = 1;
  setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(kHeadendPort);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const int result = bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  const int error = errno;
  close(listener);
  if (result != 0 && error == EADDRINUSE) {
    throw std::runtime_error("127.0.0.1:" + std::to_string(kHeadendPort) +
                             " is in use: stop the program that listens there");
  }
  errno = error;
  check(result, "bind 127.0.0.1:" + std::to_string(kHeadendPort));
}

/// The topmost part of the catalogue's path that is not there yet.
fs::path firstMissingPart() {
  fs::path part;
  for (const fs::path& name : fs::path(kCataloguePath)) {
    part /= name;
    if (!fs::exists(fs::symlink_status(part))) {
      return part;
    }
  }
  throw std::runtime_error(std::string(kCataloguePath) +
                           " exists and is not overwritten: move it away");
}

/// Waits in a process of its own for the end of the sandboxed one, however it ends, removes `made`
/// and gives up `lock`. Outside the session and the family of the sandboxed process, so that
/// nothing that ends that one, and its children with it, ends this one too.
[[noreturn]] void cleanAfterwards(int sandboxed, int lock, const fs::path& made) {
  setsid();
  if (fork() != 0) {
    _exit(0);
  }
  const int nowhere = open("/dev/null", O_RDWR);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    dup2(nowhere, stream);
  }
  char nothing = 0;
  while (read(sandboxed, &nothing, 1) < 0 && errno == EINTR) {
  }
  std::error_code ignored;
  fs::remove_all(made, ignored);
  for (const char* companion : {"-journal", "-wal", "-shm"}) {
    fs::remove(std::string(kCataloguePath) + companion, ignored);
  }
  close(lock);
  _exit(0);
}

pid_t sharingProcess = 0;
int cleaner = -1;  ///< a socket to the process that cleans afterwards

/// At a regular end, waits until all is clean: who starts the next process finds it so.
void waitUntilClean() {
  if (getpid() != sharingProcess) {
    return;
  }
  shutdown(cleaner, SHUT_WR);
  char nothing = 0;
  while (read(cleaner, &nothing, 1) < 0 && errno == EINTR) {
  }
}

void takeMachinesOwn() {
  const int lock = waitForTurn();
  requireFreePort();
  const fs::path made = firstMissingPart();
  std::array<int, 2> ends{};
  check(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), "socketpair");
  const pid_t child = check(fork(), "fork");
  if (child == 0) {
    close(ends[0]);
    cleanAfterwards(ends[1], lock, made);
  }
  close(ends[1]);
  close(lock);
  waitpid(child, nullptr, 0);
  cleaner = ends[0];
  sharingProcess = getpid();
  std::atexit(waitUntilClean);
  fs::create_directories(kCatalogueFolder);
}

}  // namespace

void enterSandbox() {
  const char* const value = std::getenv(kSandboxVariable);
  const std::string way = value == nullptr ? "" : value;
  if (way == "inside") {
    return;
  }
  if (!way.empty() && way != "shared") {
    throw std::runtime_error(std::string(kSandboxVariable) + " is \"" + way +
                             "\": use \"shared\" or leave it unset");
  }
  const std::string refusal =
      way == "shared" ? std::string(kSandboxVariable) + "=shared" : refusalOfNamespaces();
  if (refusal.empty()) {
    enterNamespaces();
  } else if (geteuid() == 0) {
    takeMachinesOwn();
  } else {
    throw std::runtime_error("a simulated headend needs namespaces of its own (" + refusal +
                             "): allow them to this user, or run as root");
  }
  setenv(kSandboxVariable, "inside", 1);
}

}  // namespace lineup

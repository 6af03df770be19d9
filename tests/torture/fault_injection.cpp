// Makes one call of a running program fail, block or be its last. Loaded with LD_PRELOAD and told
// by the environment:
//
//   FAULT_KIND   which calls count: the name that fails() gets below, or "system" for all but the
//                allocations, those of child processes included
//   FAULT_AT     the number of the call that fails, from 1; 0 for none
//   FAULT_ON     what happens at it: "once" it fails; "on", and all later ones, too; "block" it
//                waits until a signal interrupts it; "stuck" no signal interrupts it, as with a
//                disk that does not answer; "late" it and all later ones take a third of a second
//                in child processes; "kill" it and all processes of its group are killed
//   FAULT_ERROR  the errno of a call that fails, in place of one that it may have
//   FAULT_HASTE  a number: interval timers, time-outs of poll() and CLOCK_MONOTONIC are so many
//                times as fast
//   FAULT_LOG    the abstract name of a socket that takes the place of /dev/log
//   FAULT_COUNT  a file that holds, as longs in memory, the number of calls made so far and that of
//                those at which the fault happened
//
// The counts rely on the console having one thread. Of the children that write the copy of the
// edits, only the calls of the kinds "copy" and "system" count. Pure waits and syncs return at
// once.

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>

namespace {

enum class What { Once, On, Block, Stuck, Late, Kill };

struct Plan {
  const char* kind = nullptr;
  long at = 0;
  What what = What::Once;
  int error = 0;
  long haste = 1;
};

Plan plan;

/// Shared with the file, so that they are there however the program ends.
struct Counts {
  long calls = 0;
  long faults = 0;
};
Counts uncounted;
Counts* counts = &uncounted;

/// Whether main() has begun: what the loader, the sanitizers and the static constructors do before,
/// such as the C++ library's reserve for exceptions, is not counted.
bool started = false;
pid_t program = 0;

void shareCount(const char* path) {
  const int file = open(path, O_RDWR | O_CREAT | O_TRUNC, 0600);
  if (file < 0) {
    return;
  }
  if (ftruncate(file, sizeof(Counts)) == 0) {
    void* const shared = mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    counts = shared == MAP_FAILED ? counts : static_cast<Counts*>(shared);
  }
  close(file);
}

long numberFrom(const char* variable, long otherwise) {
  const char* const value = std::getenv(variable);
  return value == nullptr ? otherwise : std::strtol(value, nullptr, 10);
}

What whatFrom(const char* word) {
  constexpr const char* kWords[] = {"once", "on", "block", "stuck", "late", "kill"};
  int place = 0;
  for (const char* known : kWords) {
    if (word != nullptr && std::strcmp(word, known) == 0) {
      return static_cast<What>(place);
    }
    ++place;
  }
  return What::Once;
}

void start() {
  plan.kind = std::getenv("FAULT_KIND");
  plan.at = numberFrom("FAULT_AT", 0);
  plan.what = whatFrom(std::getenv("FAULT_ON"));
  plan.error = static_cast<int>(numberFrom("FAULT_ERROR", 0));
  plan.haste = numberFrom("FAULT_HASTE", 1);
  if (const char* const path = std::getenv("FAULT_COUNT"); path != nullptr) {
    shareCount(path);
  }
  program = getpid();
  started = plan.kind != nullptr;
}

__attribute__((destructor)) void finish() {
  started = false;
}

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// What is done with the copy of the edits besides filling it, here or in a child process.
constexpr const char* kCopy = "copy";

/// What is done with the connection to the system's log.
constexpr const char* kLog = "log";

/// What is asked of the terminal, and told to it, besides reading and writing.
constexpr const char* kTerminal = "terminal";

bool isCounted(const char* kind) {
  if (!started) {
    return false;
  }
  if (std::strcmp(plan.kind, "system") == 0) {
    return std::strcmp(kind, "malloc") != 0 && std::strcmp(kind, "new") != 0 &&
           std::strcmp(kind, "interruption") != 0;
  }
  return std::strcmp(kind, plan.kind) == 0 && (kind == kCopy || getpid() == program);
}

/// Waits for ever, or until a signal interrupts it, with `mask` meanwhile if there is one. A child
/// of a program that has ended does not wait any more.
void block(const sigset_t* mask, bool restarts) {
  static int ends[2] = {-1, -1};
  if (ends[0] < 0 && pipe(ends) != 0) {
    return;
  }
  const pid_t parent = getpid() == program ? 0 : program;
  bool interrupted = false;
  while (plan.what == What::Stuck || !interrupted) {
    if (parent != 0) {
      timespec while_{0, 50'000'000};
      nanosleep(&while_, nullptr);
      if (getppid() != parent) {
        _exit(EXIT_FAILURE);
      }
    } else if (restarts) {
      char byte = 0;
      static auto* const real = next<ssize_t(int, void*, size_t)>("read");
      interrupted = real(ends[0], &byte, 1) < 0;
    } else {
      static auto* const real =
          next<int(pollfd*, nfds_t, const timespec*, const sigset_t*)>("ppoll");
      interrupted = real(nullptr, 0, nullptr, mask) < 0;
    }
  }
}

/// What happens at the call that is planned. `mask` is the one of a call that polls.
void strike(const char* kind, const sigset_t* mask) {
  __atomic_add_fetch(&counts->faults, 1, __ATOMIC_SEQ_CST);
  if (plan.what == What::Kill) {
    kill(0, SIGKILL);
  } else if (plan.what == What::Late) {
    const timespec pause{0, getpid() == program ? 0 : 333'000'000};
    nanosleep(&pause, nullptr);
  } else if (plan.what == What::Block || plan.what == What::Stuck) {
    plan.error = EINTR;
    block(mask, std::strcmp(kind, "poll") != 0);  // the kernel restarts no poll
  }
}

/// Counts a call of the kind; true if it is to fail.
bool fails(const char* kind, const sigset_t* mask = nullptr) {
  if (!isCounted(kind)) {
    return false;
  }
  const long number = __atomic_add_fetch(&counts->calls, 1, __ATOMIC_SEQ_CST);
  const bool lasts = plan.what == What::On || plan.what == What::Late;
  const bool strikes = plan.at > 0 && (lasts ? number >= plan.at : number == plan.at);
  if (strikes) {
    strike(kind, mask);
  }
  return strikes && plan.what != What::Late;
}

template <class Result>
Result failWith(int error, Result result) {
  errno = plan.error == 0 ? error : plan.error;
  return result;
}

/// The kind of a call that sends something.
const char* kindOf(int socket) {
  sockaddr address{};
  socklen_t length = sizeof address;
  const bool named = getsockname(socket, &address, &length) == 0;
  return named && address.sa_family == AF_UNIX ? kLog : "send";
}

/// How much waiting has been left out so far.
timespec skipped{};

constexpr long long kSecond = 1'000'000'000;

long long nanoseconds(const timespec& time) {
  return time.tv_sec * kSecond + time.tv_nsec;
}

timespec asTime(long long nanoseconds) {
  return {static_cast<time_t>(nanoseconds / kSecond), static_cast<long>(nanoseconds % kSecond)};
}

timespec sum(const timespec& a, const timespec& b) {
  return asTime(nanoseconds(a) + nanoseconds(b));
}

timeval hastened(const timeval& time) {
  const long long microseconds = (time.tv_sec * 1'000'000LL + time.tv_usec) / plan.haste;
  return {static_cast<time_t>(microseconds / 1'000'000),
          static_cast<suseconds_t>(microseconds % 1'000'000)};
}

/// What SQLite does with files besides opening and closing them. The console itself asks only for
/// the sizes of its files.
constexpr const char* kDatabase = "database";

int (*realMain)(int, char**, char**) = nullptr;

int countedMain(int argc, char** argv, char** environment) {
  start();
  return realMain(argc, argv, environment);
}

}  // namespace

extern "C" {

// NOLINTNEXTLINE(bugprone-reserved-identifier): the C library's own
int __libc_start_main(int (*main)(int, char**, char**), int argc, char** argv, void (*init)(),
                      void (*fini)(), void (*loaderFini)(), void* stackEnd) {
  realMain = main;
  return next<decltype(__libc_start_main)>("__libc_start_main")(countedMain, argc, argv, init, fini,
                                                                loaderFini, stackEnd);
}

int socket(int domain, int type, int protocol) {
  static auto* const real = next<int(int, int, int)>("socket");
  const char* const kind = domain == AF_UNIX ? kLog : "socket";
  return fails(kind) ? failWith(EMFILE, -1) : real(domain, type, protocol);
}

int connect(int descriptor, const sockaddr* address, socklen_t length) {
  static auto* const real = next<int(int, const sockaddr*, socklen_t)>("connect");
  if (address->sa_family != AF_UNIX) {
    return fails("connect") ? failWith(ENETUNREACH, -1) : real(descriptor, address, length);
  }
  const char* const name = std::getenv("FAULT_LOG");
  sockaddr_un log{AF_UNIX, {}};
  std::strncpy(log.sun_path + 1, name == nullptr ? "" : name, sizeof log.sun_path - 2);
  return fails(kLog) ? failWith(ENETUNREACH, -1)
                     : real(descriptor, reinterpret_cast<const sockaddr*>(&log), sizeof log);
}

ssize_t send(int descriptor, const void* data, size_t size, int flags) {
  static auto* const real = next<ssize_t(int, const void*, size_t, int)>("send");
  return fails(kindOf(descriptor)) ? failWith<ssize_t>(ECONNRESET, -1)
                                   : real(descriptor, data, size, flags);
}

ssize_t recv(int descriptor, void* data, size_t size, int flags) {
  static auto* const real = next<ssize_t(int, void*, size_t, int)>("recv");
  return fails("recv") ? failWith<ssize_t>(ECONNRESET, -1) : real(descriptor, data, size, flags);
}

int poll(pollfd* descriptors, nfds_t count, int timeout) {
  static auto* const real = next<int(pollfd*, nfds_t, int)>("poll");
  const int hastened = timeout > 0 ? static_cast<int>(timeout / plan.haste) : timeout;
  return fails("poll") ? failWith(ENOMEM, -1) : real(descriptors, count, hastened);
}

/// A mere wait takes no time: the clock below is set forward instead.
int ppoll(pollfd* descriptors, nfds_t count, const timespec* timeout, const sigset_t* mask) {
  static auto* const real = next<int(pollfd*, nfds_t, const timespec*, const sigset_t*)>("ppoll");
  if (count == 0 && timeout != nullptr) {
    skipped = sum(skipped, *timeout);
    return 0;
  }
  return fails("poll", mask) ? failWith(ENOMEM, -1) : real(descriptors, count, timeout, mask);
}

int clock_gettime(clockid_t clock, timespec* time) noexcept {
  static auto* const real = next<int(clockid_t, timespec*)>("clock_gettime");
  static timespec begin{};
  const int result = real(clock, time);
  if (clock == CLOCK_MONOTONIC) {
    begin = begin.tv_sec == 0 ? *time : begin;
    *time = asTime(nanoseconds(begin) + (nanoseconds(*time) - nanoseconds(begin)) * plan.haste);
  }
  *time = sum(*time, skipped);
  return result;
}

int setitimer(__itimer_which_t which, const itimerval* value, itimerval* before) noexcept {
  static auto* const real = next<int(__itimer_which_t, const itimerval*, itimerval*)>("setitimer");
  const itimerval sooner{hastened(value->it_interval), hastened(value->it_value)};
  return real(which, &sooner, before);
}

int open(const char* path, int flags, ...) {
  static auto* const real = next<int(const char*, int, ...)>("open");
  va_list arguments;
  va_start(arguments, flags);
  const unsigned mode = va_arg(arguments, unsigned);
  va_end(arguments);
  return fails("open") ? failWith(EMFILE, -1) : real(path, flags, mode);
}

int open64(const char* path, int flags, ...) {
  static auto* const real = next<int(const char*, int, ...)>("open64");
  va_list arguments;
  va_start(arguments, flags);
  const unsigned mode = va_arg(arguments, unsigned);
  va_end(arguments);
  return fails("open") ? failWith(EMFILE, -1) : real(path, flags, mode);
}

FILE* fopen(const char* path, const char* mode) {
  static auto* const real = next<FILE*(const char*, const char*)>("fopen");
  return fails("open") ? failWith<FILE*>(EMFILE, nullptr) : real(path, mode);
}

int isatty(int descriptor) noexcept {
  static auto* const real = next<int(int)>("isatty");
  return fails(kTerminal) ? failWith(EIO, 0) : real(descriptor);
}

int tcgetattr(int descriptor, termios* mode) noexcept {
  static auto* const real = next<int(int, termios*)>("tcgetattr");
  return fails(kTerminal) ? failWith(EIO, -1) : real(descriptor, mode);
}

int tcsetattr(int descriptor, int when, const termios* mode) noexcept {
  static auto* const real = next<int(int, int, const termios*)>("tcsetattr");
  return fails(kTerminal) ? failWith(EIO, -1) : real(descriptor, when, mode);
}

int ioctl(int descriptor, unsigned long request, ...) noexcept {
  static auto* const real = next<int(int, unsigned long, ...)>("ioctl");
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  return fails(kTerminal) ? failWith(EIO, -1) : real(descriptor, request, argument);
}

int signalfd(int descriptor, const sigset_t* mask, int flags) noexcept {
  static auto* const real = next<int(int, const sigset_t*, int)>("signalfd");
  return fails("signalfd") ? failWith(EMFILE, -1) : real(descriptor, mask, flags);
}

int openat(int folder, const char* path, int flags, ...) {
  static auto* const real = next<int(int, const char*, int, ...)>("openat");
  va_list arguments;
  va_start(arguments, flags);
  const unsigned mode = va_arg(arguments, unsigned);
  va_end(arguments);
  return fails(kCopy) ? failWith(EACCES, -1) : real(folder, path, flags, mode);
}

int fsync(int /*descriptor*/) {
  return fails(kCopy) ? failWith(EIO, -1) : 0;
}

int renameat(int folder, const char* name, int newFolder, const char* newName) noexcept {
  static auto* const real = next<int(int, const char*, int, const char*)>("renameat");
  return fails(kCopy) ? failWith(ENOSPC, -1) : real(folder, name, newFolder, newName);
}

int flock(int descriptor, int operation) noexcept {
  static auto* const real = next<int(int, int)>("flock");
  return fails(kCopy) ? failWith(ENOLCK, -1) : real(descriptor, operation);
}

pid_t fork() {
  static auto* const real = next<pid_t()>("fork");
  return fails(kCopy) ? failWith(EAGAIN, -1) : real();
}

/// One that waits for the child.
pid_t waitpid(pid_t child, int* status, int options) {
  static auto* const real = next<pid_t(pid_t, int*, int)>("waitpid");
  const bool counts = (options & WNOHANG) == 0;
  return counts && fails("wait") ? failWith(EINTR, -1) : real(child, status, options);
}

int mkdir(const char* path, mode_t mode) noexcept {
  static auto* const real = next<int(const char*, mode_t)>("mkdir");
  return fails(kCopy) ? failWith(EACCES, -1) : real(path, mode);
}

int mkdirat(int folder, const char* path, mode_t mode) noexcept {
  static auto* const real = next<int(int, const char*, mode_t)>("mkdirat");
  return fails(kCopy) ? failWith(EACCES, -1) : real(folder, path, mode);
}

int fchmod(int descriptor, mode_t mode) noexcept {
  static auto* const real = next<int(int, mode_t)>("fchmod");
  return fails(kCopy) ? failWith(EPERM, -1) : real(descriptor, mode);
}

int unlinkat(int folder, const char* name, int flags) noexcept {
  static auto* const real = next<int(int, const char*, int)>("unlinkat");
  return fails(kCopy) ? failWith(EACCES, -1) : real(folder, name, flags);
}

ssize_t write(int descriptor, const void* data, size_t size) {
  static auto* const real = next<ssize_t(int, const void*, size_t)>("write");
  return fails("write") ? failWith<ssize_t>(ENOSPC, -1) : real(descriptor, data, size);
}

ssize_t read(int descriptor, void* data, size_t size) {
  static auto* const real = next<ssize_t(int, void*, size_t)>("read");
  if (fails("interruption")) {
    return failWith<ssize_t>(EINTR, -1);
  }
  return fails("read") ? failWith<ssize_t>(EIO, -1) : real(descriptor, data, size);
}

int close(int descriptor) {
  static auto* const real = next<int(int)>("close");
  if (fails("close")) {
    real(descriptor);  // a close that fails has closed all the same
    return failWith(EIO, -1);
  }
  return real(descriptor);
}

int syncfs(int /*descriptor*/) noexcept {
  return fails("syncfs") ? failWith(EIO, -1) : 0;
}

void sync() noexcept {}

// ---- what SQLite does with files

ssize_t pread64(int descriptor, void* data, size_t size, off64_t offset) {
  static auto* const real = next<ssize_t(int, void*, size_t, off64_t)>("pread64");
  return fails(kDatabase) ? failWith<ssize_t>(EIO, -1) : real(descriptor, data, size, offset);
}

int fstat(int descriptor, struct stat* status) noexcept {
  static auto* const real = next<int(int, struct stat*)>("fstat");
  return fails(kDatabase) ? failWith(EIO, -1) : real(descriptor, status);
}

int fstat64(int descriptor, struct stat64* status) noexcept {
  static auto* const real = next<int(int, struct stat64*)>("fstat64");
  return fails(kDatabase) ? failWith(EIO, -1) : real(descriptor, status);
}

int stat(const char* path, struct stat* status) noexcept {
  static auto* const real = next<int(const char*, struct stat*)>("stat");
  return fails(kDatabase) ? failWith(EACCES, -1) : real(path, status);
}

int stat64(const char* path, struct stat64* status) noexcept {
  static auto* const real = next<int(const char*, struct stat64*)>("stat64");
  return fails(kDatabase) ? failWith(EACCES, -1) : real(path, status);
}

int lstat64(const char* path, struct stat64* status) noexcept {
  static auto* const real = next<int(const char*, struct stat64*)>("lstat64");
  return fails(kDatabase) ? failWith(EACCES, -1) : real(path, status);
}

int access(const char* path, int mode) noexcept {
  static auto* const real = next<int(const char*, int)>("access");
  return fails(kDatabase) ? failWith(EACCES, -1) : real(path, mode);
}

ssize_t readlink(const char* path, char* target, size_t size) noexcept {
  static auto* const real = next<ssize_t(const char*, char*, size_t)>("readlink");
  return fails(kDatabase) ? failWith<ssize_t>(EACCES, -1) : real(path, target, size);
}

int fcntl64(int descriptor, int command, ...) {
  static auto* const real = next<int(int, int, ...)>("fcntl64");
  va_list arguments;
  va_start(arguments, command);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  return fails(kDatabase) ? failWith(EIO, -1) : real(descriptor, command, argument);
}

// Allocations by the C library's names: those of SQLite, of the line editing and of the Thrift
// library's buffers. Unless a sanitizer is in the program, those by operators, too.
void* malloc(size_t size) {
  static auto* const real = next<void*(size_t)>("malloc");
  return fails("malloc") ? failWith<void*>(ENOMEM, nullptr) : real(size);
}

void* calloc(size_t count, size_t size) {
  static auto* const real = next<void*(size_t, size_t)>("calloc");
  return fails("malloc") ? failWith<void*>(ENOMEM, nullptr) : real(count, size);
}

void* realloc(void* block, size_t size) {
  static auto* const real = next<void*(void*, size_t)>("realloc");
  return fails("malloc") ? failWith<void*>(ENOMEM, nullptr) : real(block, size);
}

}  // extern "C"

// What they return is the library's own, and so are the operators that free it.
// NOLINTBEGIN(cert-dcl54-cpp,misc-new-delete-overloads)
void* operator new(size_t size) {
  static auto* const real = next<void*(size_t)>("_Znwm");
  if (fails("new")) {
    throw std::bad_alloc();
  }
  return real(size);
}

void* operator new[](size_t size) {
  static auto* const real = next<void*(size_t)>("_Znam");
  if (fails("new")) {
    throw std::bad_alloc();
  }
  return real(size);
}
// NOLINTEND(cert-dcl54-cpp,misc-new-delete-overloads)

// This library stands before the C library and lets one call of the function STAYLIT_FAILING_CALL
// fail with the error number STAYLIT_FAILING_ERROR: the call with the number
// STAYLIT_FAILING_NUMBER. It then makes the file STAYLIT_FAILING_MARK.

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

namespace {

const char* variable(const char* name) {
  const char* value = ::getenv(name);
  return value != nullptr ? value : "";
}

/// The error with which this call must fail; 0 when it must not fail.
int errorOf(const char* call) {
  static std::atomic<long> count{0};
  if (std::strcmp(variable("STAYLIT_FAILING_CALL"), call) != 0) return 0;
  if (++count != std::atol(variable("STAYLIT_FAILING_NUMBER"))) return 0;
  // These system calls go past the C library, where they would be counted too.
  const char* mark = variable("STAYLIT_FAILING_MARK");
  ::syscall(SYS_close, ::syscall(SYS_openat, AT_FDCWD, mark, O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  return std::atoi(variable("STAYLIT_FAILING_ERROR"));
}

/// Whether this call must fail. Then `errno` is set.
bool fails(const char* call) {
  const int error = errorOf(call);
  if (error != 0) errno = error;
  return error != 0;
}

template <typename Function>
Function next(const char* name) {
  return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

mode_t modeOf(int flags, va_list arguments) {
  const bool hasMode = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
  return hasMode ? va_arg(arguments, mode_t) : 0;
}

bool isFile(int descriptor) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeOf(flags, arguments);
  va_end(arguments);
  if (fails("open")) return -1;
  return next<int (*)(const char*, int, ...)>("open")(path, flags, mode);
}

int open64(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeOf(flags, arguments);
  va_end(arguments);
  if (fails("open")) return -1;
  return next<int (*)(const char*, int, ...)>("open64")(path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeOf(flags, arguments);
  va_end(arguments);
  if (fails("open")) return -1;
  return next<int (*)(int, const char*, int, ...)>("openat")(folder, path, flags, mode);
}

int mkostemp(char* path, int flags) {
  return fails("mkostemp") ? -1 : next<int (*)(char*, int)>("mkostemp")(path, flags);
}

int socket(int domain, int type, int protocol) {
  return fails("socket") ? -1 : next<int (*)(int, int, int)>("socket")(domain, type, protocol);
}

ssize_t write(int descriptor, const void* data, size_t size) {
  if (isFile(descriptor) && fails("write")) return -1;
  return next<ssize_t (*)(int, const void*, size_t)>("write")(descriptor, data, size);
}

ssize_t read(int descriptor, void* data, size_t size) {
  if (isFile(descriptor) && fails("read")) return -1;
  return next<ssize_t (*)(int, void*, size_t)>("read")(descriptor, data, size);
}

int fsync(int descriptor) {
  return fails("fsync") ? -1 : next<int (*)(int)>("fsync")(descriptor);
}

int rename(const char* from, const char* to) {
  return fails("rename") ? -1 : next<int (*)(const char*, const char*)>("rename")(from, to);
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) {
  if (fails("rename")) return -1;
  return next<int (*)(int, const char*, int, const char*, unsigned)>("renameat2")(
      fromFolder, from, toFolder, to, flags);
}

ssize_t sendmsg(int descriptor, const msghdr* message, int flags) {
  if (fails("sendmsg")) return -1;
  return next<ssize_t (*)(int, const msghdr*, int)>("sendmsg")(descriptor, message, flags);
}

ssize_t recvmsg(int descriptor, msghdr* message, int flags) {
  if (fails("recvmsg")) return -1;
  return next<ssize_t (*)(int, msghdr*, int)>("recvmsg")(descriptor, message, flags);
}

pid_t fork() {
  return fails("fork") ? -1 : next<pid_t (*)()>("fork")();
}

int posix_spawn(pid_t* process, const char* path, const posix_spawn_file_actions_t* actions,
                const posix_spawnattr_t* attributes, char* const* arguments,
                char* const* environment) {
  if (const int error = errorOf("fork")) return error;
  return next<decltype(&posix_spawn)>("posix_spawn")(process, path, actions, attributes, arguments,
                                                     environment);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                   void* argument) {
  if (const int error = errorOf("pthread_create")) return error;
  return next<decltype(&pthread_create)>("pthread_create")(thread, attributes, run, argument);
}

int clock_gettime(clockid_t clock, timespec* time) {
  // The clocks of processes have negative numbers.
  if (clock < 0 && fails("clock_gettime")) return -1;
  return next<int (*)(clockid_t, timespec*)>("clock_gettime")(clock, time);
}

}  // extern "C"

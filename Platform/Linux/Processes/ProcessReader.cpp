#include "Platform/Linux/Processes/ProcessReader.h"

#include <algorithm>
#include <cerrno>
#include <functional>
#include <string>
#include <utility>

#include "Platform/Linux/Processes/LinuxApplication.h"
#include "Platform/Linux/Processes/ProgramPath.h"
#include "Platform/Linux/Processes/ShellWork.h"

namespace platform {
namespace {

constexpr std::uint8_t kQuietPassesBeforeClosing = 5;
/// A process seldom changes its program and keeps its name, so such a change may be noticed a
/// little late.
constexpr std::uint8_t kActivePassesBetweenLooks = 8;

using Access = TrackedProcess::Access;

bool isPermission(int error) {
  return error == EACCES || error == EPERM;
}

void setComm(TrackedProcess& process, std::string_view comm) {
  process.comm.fill('\0');
  comm.copy(process.comm.data(), process.comm.size() - 1);
}

std::size_t hashOf(std::string_view text) {
  return std::hash<std::string_view>{}(text);
}

/// Forgets all but the pid and the CPU time, because the pid belongs to another process now.
void startOver(TrackedProcess& process, std::uint64_t startTicks) {
  const std::int32_t pid = process.pid;
  const std::uint64_t cpuTime = process.cpuTime;
  process = TrackedProcess(pid);
  process.cpuTime = cpuTime;
  process.startTicks = startTicks;
}

}  // namespace

ProcessReader::ProcessReader(ProcFileSystem& proc, ApplicationResolver& applications,
                             tidewell::Text& text, ControlGroups& groups, Lookup known)
    : proc_(proc),
      applications_(applications),
      text_(text),
      groups_(groups),
      known_(std::move(known)) {}

bool ProcessReader::readAll(TrackedProcess& process) {
  const std::optional<ProcStat> stat = this->stat(process.pid);
  if (!stat) return false;
  forget(process);
  if (process.startTicks != stat->startTicks) startOver(process, stat->startTicks);
  if (process.looks < UINT8_MAX) ++process.looks;
  process.parentPid = stat->parentPid;
  process.session = stat->session;
  takeReaped(process, *stat);
  process.activePasses = 0;
  setComm(process, stat->comm);
  return readProgram(process, *stat);
}

bool ProcessReader::readProgram(TrackedProcess& process, const ProcStat& stat) {
  const auto link = proc_.readLink(process.pid, "exe");
  if (!link) {
    if (errno == ESRCH) return false;
    // An ended process has no program any more. What was known of the process still holds.
    if (isPermission(errno)) process.access = Access::refused;
    return true;
  }
  const std::string program(*link);
  process.access = Access::readable;
  if (!readIo(process)) {
    if (!isPermission(errno)) return false;
    process.access = Access::refused;
    return true;
  }
  ++process.programVersion;
  process.linkHash = hashOf(program);
  process.path = paths_.share(readPath(process, program));
  readApplication(process, stat, program);
  return true;
}

void ProcessReader::readGroup(TrackedProcess& process) {
  process.group = groups_.number(proc_.read(process.pid, "cgroup").value_or(""));
}

/// The path by which a person knows the process.
///
/// A shell goes by the script that it runs. A shell that only runs a command for its parent, as for
/// `make`, goes by its parent's path. A shell that began a session of its own, as in a terminal
/// window, does not work for its parent.
std::string ProcessReader::readPath(const TrackedProcess& process, const std::string& program) {
  if (runsShell(program, process.commText())) {
    const auto arguments = proc_.read(process.pid, "cmdline");
    const ShellWork work = shellWork(arguments.value_or(""));
    if (work.kind == ShellWork::Kind::script) return scriptPath(program, work.script);
    const TrackedProcess* parent = known_(process.parentPid);
    const bool isForParent = work.kind == ShellWork::Kind::command && parent &&
                             parent->session == process.session && !parent->path.empty();
    if (isForParent) return std::string(std::string_view(parent->path));
  }
  return programPath(program, process.commText(), text_);
}

void ProcessReader::readApplication(TrackedProcess& process, const ProcStat& stat,
                                    std::string_view program) {
  const auto cgroup = proc_.read(process.pid, "cgroup");
  process.group = groups_.number(cgroup.value_or(""));
  const auto identity = applications_.applicationOf({.pid = process.pid,
                                                     .startTicks = stat.startTicks,
                                                     .session = stat.session,
                                                     .hasTerminal = stat.terminal != 0,
                                                     .program = program,
                                                     .cgroup = cgroup.value_or("")});
  process.application =
      identity ? std::make_shared<LinuxApplication>(process.pid, identity) : nullptr;
}

bool ProcessReader::readAfterRun(TrackedProcess& process, bool mayReap) {
  process.quietPasses = 0;
  if (process.access != Access::readable) return true;
  keepOpen(process);
  // The bytes are read before the reaped time. Both include what reaped children used, and a reaped
  // child is recognised by its time. So its bytes must not show before its time does.
  if (!readIo(process) || programChanged(process, mayReap)) return readAll(process);
  return true;
}

void ProcessReader::noteChildren(TrackedProcess& process) {
  // The open file is `comm`, which tells nothing of children.
  if (!std::exchange(process.reaps, true)) process.nameFile = Descriptor();
}

void ProcessReader::takeReaped(TrackedProcess& process, const ProcStat& stat) {
  process.reapedTicks = stat.childUserTicks + stat.childSystemTicks;
  if (process.reapedTicks > 0) noteChildren(process);
}

bool ProcessReader::readIo(TrackedProcess& process) {
  const auto text = process.ioFile ? proc_.read(process.ioFile) : proc_.read(process.pid, "io");
  if (!text) return false;
  // A kernel without I/O accounting leaves the file empty. The traffic is then unknown and counts
  // as none.
  process.io = parseProcIo(*text).value_or(ProcIo());
  return true;
}

bool ProcessReader::programChanged(TrackedProcess& process, bool mayReap) {
  const bool reaps = process.reaps || mayReap;
  if (reaps ? !readStatAfterRun(process) : !commIsSame(process)) return true;
  if (++process.activePasses < kActivePassesBetweenLooks) return false;
  process.activePasses = 0;
  const auto link = proc_.readLink(process.pid, "exe");
  return link && hashOf(*link) != process.linkHash;
}

bool ProcessReader::commIsSame(TrackedProcess& process) {
  auto comm = process.nameFile ? proc_.read(process.nameFile) : proc_.read(process.pid, "comm");
  if (!comm) return false;
  if (comm->ends_with('\n')) comm->remove_suffix(1);
  return *comm == process.commText();
}

/// Reads `stat`, which tells the time of reaped children, and whether the process and its name are
/// still the same. False when they are not.
bool ProcessReader::readStatAfterRun(TrackedProcess& process) {
  const auto text = process.reaps && process.nameFile ? proc_.read(process.nameFile)
                                                      : proc_.read(process.pid, "stat");
  const auto stat = text ? parseProcStat(*text) : std::nullopt;
  if (!stat || stat->startTicks != process.startTicks) return false;
  takeReaped(process, *stat);
  return stat->comm == process.commText();
}

void ProcessReader::keepOpen(TrackedProcess& process) {
  if (process.ioFile && !process.nameFile) openNameFile(process);
  if (process.ioFile || keptOpen_ >= mostKeptOpen_) return;
  process.ioFile = proc_.open(process.pid, "io");
  openNameFile(process);
  if (process.ioFile) ++keptOpen_;
}

void ProcessReader::openNameFile(TrackedProcess& process) {
  process.nameFile = proc_.open(process.pid, process.reaps ? "stat" : "comm");
}

void ProcessReader::noteQuiet(TrackedProcess& process) {
  if (process.ioFile && ++process.quietPasses > kQuietPassesBeforeClosing) forget(process);
}

void ProcessReader::forget(TrackedProcess& process) {
  if (process.ioFile) --keptOpen_;
  process.ioFile = Descriptor();
  process.nameFile = Descriptor();
}

std::optional<ProcStat> ProcessReader::stat(std::int32_t pid) {
  const auto text = proc_.read(pid, "stat");
  return text ? parseProcStat(*text) : std::nullopt;
}

}  // namespace platform

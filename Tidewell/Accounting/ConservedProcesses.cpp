#include "Tidewell/Accounting/ConservedProcesses.h"

#include <algorithm>
#include <utility>

namespace tidewell {
namespace {

using namespace std::chrono_literals;

/// The kernel cuts the user part and the system part of a reaped time to hundredths of a second.
constexpr std::uint64_t kToleranceNanos = 20'000'000;
/// Processes are read one after the other, so the interval is not the same for all.
constexpr double kHeadroom = 1.25;
/// The fastest drives are connected by four lanes of PCI Express 5.0.
constexpr double kFastestDriveBytesPerSecond = 16e9;

std::uint64_t timeUnits(double nanos, Timebase timebase) {
  return static_cast<std::uint64_t>(nanos * static_cast<double>(timebase.denom) /
                                    static_cast<double>(timebase.numer));
}

}  // namespace

ConservedProcesses::ConservedProcesses(Sources sources)
    : sources_(sources),
      usage_(sources.table, accounts_, sources.accounts),
      processes_(sources.table, usage_, sources.self) {
  if (sources.groups) groups_.emplace(*sources.groups);
}

ConservedProcesses::~ConservedProcesses() = default;

ProcessSnapshot ConservedProcesses::snapshot() {
  pass(sources_.table.snapshot());
  for (const AccountBook::Account& account : accounts_.accounts()) {
    if (!account.isListed) continue;
    processes_.order().push_back(account.identifier);
    if (account.application) applications_.push_back(account.application);
  }
  return {processes_.order(), applications_};
}

bool ConservedProcesses::resourceUsage(std::int32_t pid, ResourceUsage& usage) {
  const Usage* counted = nullptr;
  std::uint32_t nameVersion = 1;  // An account never takes another name.
  if (const FollowedProcess* process = processes_.find(pid)) {
    if (process->account != 0) counted = &process->counted;
    nameVersion = process->nameVersion;
  } else if (const auto* account = accounts_.find(pid)) {
    counted = &account->usage;
  }
  if (!counted) return false;
  usage = {
      .userTime = counted->time, .diskBytesRead = counted->disk, .programVersion = nameVersion};
  return true;
}

std::string_view ConservedProcesses::path(std::int32_t pid) {
  if (const FollowedProcess* process = processes_.find(pid)) return process->path;
  const auto* account = accounts_.find(pid);
  return account ? account->path : sources_.table.path(pid);
}

std::int32_t ConservedProcesses::parent(std::int32_t pid) {
  return sources_.table.parent(pid);
}

bool ConservedProcesses::isAlive(std::int32_t pid) {
  return sources_.table.isAlive(pid);
}

Timebase ConservedProcesses::timebase() {
  return sources_.table.timebase();
}

void ConservedProcesses::pass(const ProcessSnapshot& system) {
  applications_.assign(system.applications.begin(), system.applications.end());
  std::ranges::stable_sort(applications_, {}, &RunningApplication::processIdentifier);
  const ChargeSettlement::Terms terms = nextTerms();
  accounts_.nextPass();
  noteUses();
  processes_.read(system.processes, applications_, terms.most);
  settleCharges(terms);
  if (groups_) {
    groups_->settle(processes_.living(), processes_.gone(),
                    {terms.most.time, static_cast<std::int64_t>(terms.tolerance)});
  }
  closeGone();
  processes_.updateParents();
  processes_.forgetGone();
  accounts_.dropEnded();
}

ChargeSettlement::Terms ConservedProcesses::nextTerms() {
  const Moment now = sources_.clock.now();
  const Seconds interval = now - std::exchange(lastPass_, now);
  const double seconds = std::clamp<Seconds>(interval, 0s, 24h).count() * kHeadroom;
  const Timebase timebase = sources_.table.timebase();
  const std::uint64_t time = timeUnits(seconds * 1e9 * sources_.processors, timebase);
  const auto disk = static_cast<std::uint64_t>(seconds * kFastestDriveBytesPerSecond);
  return {.most = {time, disk},
          .tolerance = timeUnits(kToleranceNanos, timebase),
          .includesDisk = sources_.table.diskIncludesReaped()};
}

void ConservedProcesses::settleCharges(const ChargeSettlement::Terms& terms) {
  ChargeSettlement charges(processes_.living(), processes_.gone(), terms);
  charges.claim();
  for (FollowedProcess& process : processes_.living()) {
    // The claims on a process that could not be read wait until it is read.
    if (!process.unread) charges.settle(process);
  }
  // A process that ended on this pass may have reaped before.
  for (FollowedProcess& process : processes_.gone())
    charges.settle(process);
}

void ConservedProcesses::closeGone() {
  for (const FollowedProcess& process : processes_.gone()) {
    usage_.leaveInAccount(process);
    // Another process may have the number already.
    if (!processes_.find(process.pid)) sources_.accounts.noteEnd(process.pid);
  }
}

/// The monitor reads what others measure one pass later, so a used account stays for two passes.
void ConservedProcesses::noteUses() {
  const std::vector<std::int32_t> former = std::exchange(lastUses_, sources_.accounts.takeUsed());
  for (const std::vector<std::int32_t>* uses : {&former, &std::as_const(lastUses_)}) {
    for (const std::int32_t account : *uses)
      accounts_.add(account, {});
  }
}

}  // namespace tidewell

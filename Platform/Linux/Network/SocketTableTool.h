#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/Network/ClosedSockets.h"
#include "Platform/Linux/Network/InterfaceCounters.h"
#include "Platform/Linux/Network/OwnerProcesses.h"
#include "Platform/Linux/Network/SocketHolders.h"
#include "Platform/Linux/Network/SocketOwners.h"
#include "Platform/Linux/Network/SocketSource.h"
#include "Platform/Linux/Network/SocketTotals.h"
#include "Tidewell/Ports/TaskLauncher.h"

namespace platform {

/// Stands in for the tool that lists each process's network bytes, which Linux does not have.
///
/// Whatever the command line, a launch is one run inside this process: it reads the kernel's table
/// of TCP sockets on the caller's thread (about a millisecond for hundreds of sockets) and hands
/// out a task that has ended with the lines "name.pid,bytes_in,bytes_out,", ascending by pid: one
/// for each account of which a process was ever seen with a socket, under the account's identifier,
/// and one for each such living process that has no account. While no interface moves a byte the
/// last output is handed out again. Where the table cannot be read, the launch fails once and from
/// then on hands out the last output, which is empty where none was ever made, until the table can
/// be read again. A table that was read in part adds to what was known. UDP, sockets of other
/// network namespaces and, for anyone but root, other users' sockets are not seen.
class SocketTableTool : public tidewell::TaskLauncher {
 public:
  /// What the tool builds on, replaceable by tests.
  struct Parts {
    std::unique_ptr<SocketSource> source;
    std::unique_ptr<SocketHolders> holders;
    std::unique_ptr<InterfaceCounters> interfaces;
    std::function<SocketOwners::Time()> now;
    std::unique_ptr<ClosedSockets> closed = nullptr;  ///< May be null, like the rest here.
    std::optional<std::uint32_t> onlyUid = {};        ///< As `SocketOwners` takes it.
    tidewell::AccountDirectory* accounts = nullptr;   ///< Outlives the tool.
  };

  /// On the machine's own tables.
  explicit SocketTableTool(tidewell::AccountDirectory* accounts = nullptr);
  explicit SocketTableTool(Parts parts);

  Launch launch(const std::string& executable, const std::vector<std::string>& arguments) override;

 private:
  Launch failed(int errorNumber);
  void measure(Coverage coverage);
  void countClosed();
  void writeOutput();

  Parts parts_;
  OwnerProcesses processes_;
  SocketOwners owners_;
  SocketTotals totals_;
  std::vector<SocketRecord> sockets_;
  std::vector<SocketRecord> closed_;
  std::optional<std::uint64_t> interfaceSum_;  ///< As of the last complete listing.
  std::string output_;
  bool hasUnread_ = false;  ///< Whether programs can go on reading while nothing arrives.
  bool hasFailed_ = false;
};

}  // namespace platform

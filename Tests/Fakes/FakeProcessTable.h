#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/MacOS/Processes/KernelSnapshot.h"
#include "Tests/Fakes/CallLog.h"
#include "Tests/Fakes/FakeRunningApplications.h"
#include "Tidewell/Ports/ProcessTable.h"

namespace tidewell {

/// A table of processes that the test fills, in the order in which the kernel would list them. It
/// gives a snapshot in the steps of the system whose kernel lists them so.
class FakeProcessTable : public ProcessTable {
 public:
  struct Row {
    std::int32_t pid = 0;
    std::optional<std::string> path;  ///< Absent: the path cannot be read.
    ResourceUsage usage;
    bool readable = true;     ///< Whether the counters can be read.
    std::int32_t parent = 0;  ///< Who reaps it; 0: nobody can tell.
  };

  /// `applications` must outlive it.
  FakeProcessTable(std::shared_ptr<CallLog> calls, FakeRunningApplications& applications)
      : calls_(std::move(calls)),
        snapshot_({[&applications] { return applications.list(); },
                   [this](std::span<std::int32_t> buffer) { return listPids(buffer); }}) {}

  ProcessSnapshot snapshot() override { return snapshot_.take(); }

  bool resourceUsage(std::int32_t pid, ResourceUsage& usage) override {
    usageAsked.push_back(pid);
    const auto row = std::ranges::find(rows, pid, &Row::pid);
    if (row == rows.end() || !row->readable) return false;
    usage = row->usage;
    return true;
  }

  std::string_view path(std::int32_t pid) override {
    pathAsked.push_back(pid);
    const auto row = std::ranges::find(rows, pid, &Row::pid);
    return row == rows.end() || !row->path ? std::string_view() : *row->path;
  }

  std::int32_t parent(std::int32_t pid) override {
    const auto row = std::ranges::find(rows, pid, &Row::pid);
    return row == rows.end() ? 0 : row->parent;
  }

  bool isAlive(std::int32_t pid) override {
    return std::ranges::find(rows, pid, &Row::pid) != rows.end();
  }

  bool diskIncludesReaped() override { return diskBytesIncludeReaped; }

  Timebase timebase() override {
    ++timebaseAsked;
    return units;
  }

  Row& add(std::int32_t pid, std::optional<std::string> path) {
    return rows.emplace_back(Row{pid, std::move(path), {}, true, 0});
  }

  /// The row of `pid`, which is there.
  Row& at(std::int32_t pid) { return *std::ranges::find(rows, pid, &Row::pid); }

  void remove(std::int32_t pid) {
    std::erase_if(rows, [pid](const Row& row) { return row.pid == pid; });
  }

  std::vector<Row> rows;
  Timebase units;  ///< Nanoseconds by default.
  bool diskBytesIncludeReaped = false;
  std::optional<int> bytesNeeded;   ///< What the call without a buffer answers instead.
  std::optional<int> bytesWritten;  ///< What the call with a buffer answers instead.
  std::function<void()> whileListing;

  std::vector<std::size_t> bufferLengths;  ///< Of every call with a buffer.
  std::vector<std::int32_t> usageAsked;
  std::vector<std::int32_t> pathAsked;
  int timebaseAsked = 0;

 private:
  int listPids(std::span<std::int32_t> buffer) {
    if (buffer.empty()) {
      calls_->add("list processes");
      if (whileListing) whileListing();
      return bytesNeeded.value_or(bytesFor(rows.size()));
    }
    bufferLengths.push_back(buffer.size());
    const std::size_t count = std::min(buffer.size(), rows.size());
    std::ranges::transform(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(count),
                           buffer.begin(), &Row::pid);
    return bytesWritten.value_or(bytesFor(count));
  }
  static int bytesFor(std::size_t count) { return static_cast<int>(count * 4); }

  std::shared_ptr<CallLog> calls_;
  platform::KernelSnapshot snapshot_;
};

}  // namespace tidewell

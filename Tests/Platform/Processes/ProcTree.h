#pragma once

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>

#include "Platform/Linux/Proc/CpuClock.h"

namespace platform {

/// A folder with the layout of `/proc`, and the CPU clocks for its processes. It is removed at the
/// end. One thread only. Throws when a file cannot be written.
class ProcTree : public CpuClock {
 public:
  struct Process {
    std::int32_t pid = 0;
    std::string exe;  ///< Empty for a kernel thread.
    std::string comm = "program";
    std::uint64_t cpuTicks = 0;        ///< In the file `stat`.
    std::uint64_t cpuNanoseconds = 0;  ///< On the clock.
    std::uint64_t readBytes = 0;
    std::uint64_t writtenBytes = 0;
    std::uint64_t start = 1000;
    std::string cgroup = "0::/user.slice\n";
    std::int32_t session = 1;
    std::int32_t terminal = 0;
    std::string state = "S";
    std::int32_t parent = 1;
    std::uint64_t reapedTicks = 0;
  };

  ProcTree() {
    std::string pattern = (std::filesystem::temp_directory_path() / "proc-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::system_error(errno, std::generic_category(), pattern);
    root_ = pattern;
    setNewestPid(0);
  }
  ~ProcTree() override {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
  }
  ProcTree(const ProcTree&) = delete;
  ProcTree& operator=(const ProcTree&) = delete;

  [[nodiscard]] std::string root() const { return root_.string(); }

  /// Adds the process, or replaces the one with its pid.
  void put(const Process& process) {
    const auto folder = root_ / std::to_string(process.pid);
    std::filesystem::remove_all(folder);
    std::filesystem::create_directory(folder);
    if (!process.exe.empty()) std::filesystem::create_symlink(process.exe, folder / "exe");
    update(process);
  }

  /// Rewrites the files of the process in place, so that files that are open show the change.
  void update(const Process& process) {
    const auto folder = root_ / std::to_string(process.pid);
    write(folder / "stat",
          std::to_string(process.pid) + " (" + process.comm + ") " + process.state + " " +
              std::to_string(process.parent) + " 1 " + std::to_string(process.session) + " " +
              std::to_string(process.terminal) + " -1 4194304 1 2 3 4 " +
              std::to_string(process.cpuTicks) + " 0 " + std::to_string(process.reapedTicks) +
              " 0 20 0 1 0 " + std::to_string(process.start) + " 1 1 1\n");
    write(folder / "comm", process.comm + "\n");
    write(folder / "cgroup", process.cgroup);
    write(folder / "io", "rchar: 9\nwchar: 9\nsyscr: 9\nsyscw: 9\nread_bytes: " +
                             std::to_string(process.readBytes) +
                             "\nwrite_bytes: " + std::to_string(process.writtenBytes) +
                             "\ncancelled_write_bytes: 77\n");
    clocks_[process.pid] = process.cpuNanoseconds;
  }

  void end(std::int32_t pid) {
    std::filesystem::remove_all(root_ / std::to_string(pid));
    clocks_.erase(pid);
  }

  /// Overwrites or, with no content, removes one file of a process.
  void setFile(std::int32_t pid, const std::string& name, std::optional<std::string> content) {
    const auto file = root_ / std::to_string(pid) / name;
    if (content) {
      write(file, *content);
    } else {
      std::filesystem::remove(file);
    }
  }

  void setClock(std::int32_t pid, std::uint64_t nanoseconds) { clocks_[pid] = nanoseconds; }
  void setNewestPid(std::int32_t pid) {
    write(root_ / "loadavg", "0.00 0.01 0.05 1/80 " + std::to_string(pid) + "\n");
  }
  void setClocksWork(bool work) { clocksWork_ = work; }
  [[nodiscard]] int clockReadings() const { return clockReadings_; }

  std::optional<std::uint64_t> nanoseconds(std::int32_t pid) override {
    ++clockReadings_;
    if (!clocksWork_) return std::nullopt;
    const auto found = clocks_.find(pid);
    return found == clocks_.end() ? std::nullopt : std::optional(found->second);
  }
  bool isAvailable() override { return clocksWork_; }

 private:
  static void write(const std::filesystem::path& file, const std::string& content) {
    std::ofstream stream(file, std::ios::binary);
    if (!(stream << content).flush()) throw std::runtime_error("cannot write " + file.string());
  }

  std::filesystem::path root_;
  std::map<std::int32_t, std::uint64_t> clocks_;
  bool clocksWork_ = true;
  int clockReadings_ = 0;
};

}  // namespace platform

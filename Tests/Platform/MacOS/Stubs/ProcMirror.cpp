#include "Tests/Platform/MacOS/Stubs/ProcMirror.h"

#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <system_error>

namespace platform::stub {
namespace {

namespace fs = std::filesystem;

std::string contents(const fs::path& file) {
  std::ostringstream text;
  // Whatever may not be read leaves it empty.
  text << std::ifstream(file).rdbuf();
  return text.str();
}

/// The fields of a stat file behind the name, the first of which is the third.
std::vector<std::string> statFields(const std::string& text) {
  std::istringstream stream(text.substr(text.rfind(')') + 1));
  return {std::istream_iterator<std::string>(stream), {}};
}

/// The number behind `key` in a file with a key and a number on each line; 0 when there is none.
std::uint64_t number(const std::string& text, const std::string& key) {
  const std::size_t found = text.find("\n" + key);
  return found == std::string::npos ? 0 : std::stoull(text.substr(found + 1 + key.size()));
}

bool ignoresEndOfChildren(const std::string& status) {
  constexpr const char* kIgnored = "\nSigIgn:";
  const std::size_t found = status.find(kIgnored);
  if (found == std::string::npos) return false;
  const std::uint64_t mask = std::stoull(status.substr(found + 8), nullptr, 16);
  return (mask >> (SIGCHLD - 1) & 1) != 0;
}

}  // namespace

std::vector<std::int32_t> mirroredPids() {
  std::vector<std::int32_t> pids;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc", error)) {
    const std::string name = entry.path().filename();
    if (name.find_first_not_of("0123456789") == std::string::npos) pids.push_back(std::stoi(name));
  }
  return pids;
}

std::optional<Process> mirroredProcess(std::int32_t pid, double nanosecondsPerUnit) {
  const fs::path folder = "/proc/" + std::to_string(pid);
  const std::string stat = contents(folder / "stat");
  struct stat owner {};
  const bool isThere = pid > 0 && !stat.empty() && ::stat(folder.c_str(), &owner) == 0;
  const std::vector<std::string> fields = isThere ? statFields(stat) : std::vector<std::string>();
  constexpr std::size_t kLastField = 19;
  if (fields.size() <= kLastField) return std::nullopt;
  const double unitsPerTick =
      1e9 / static_cast<double>(::sysconf(_SC_CLK_TCK)) / nanosecondsPerUnit;
  const auto time = [&](std::size_t index) {
    return static_cast<std::uint64_t>(std::stod(fields[index]) * unitsPerTick);
  };
  const std::string io = contents(folder / "io");
  std::error_code error;
  Process process;
  process.pid = pid;
  process.parent = std::stoi(fields[1]);
  process.user = owner.st_uid;
  process.waitsToBeReaped = fields[0] == "Z";
  process.ignoresEndOfChildren = ignoresEndOfChildren(contents(folder / "status"));
  process.path = fs::read_symlink(folder / "exe", error).string();
  process.userTime = time(11);
  process.systemTime = time(12);
  process.childUserTime = time(13);
  process.childSystemTime = time(14);
  process.startTime = time(kLastField);
  process.diskBytesRead = number(io, "read_bytes: ");
  process.diskBytesWritten = number(io, "write_bytes: ");
  return process;
}

}  // namespace platform::stub

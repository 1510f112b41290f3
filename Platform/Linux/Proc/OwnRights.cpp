#include "Platform/Linux/Proc/OwnRights.h"

#include <linux/capability.h>
#include <unistd.h>

#include <charconv>
#include <cstdint>
#include <fstream>
#include <string>

namespace platform {
namespace {

constexpr std::string_view kEffective = "\nCapEff:\t";

constexpr std::uint64_t bit(int capability) {
  return std::uint64_t{1} << capability;
}

}  // namespace

bool mayReadAllProcesses(std::string_view status) {
  const auto found = status.find(kEffective);
  if (found == std::string_view::npos) return false;
  const std::string_view digits = status.substr(found + kEffective.size());
  std::uint64_t rights = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), rights, 16);
  constexpr std::uint64_t kNeeded = bit(CAP_SYS_PTRACE) | bit(CAP_DAC_READ_SEARCH);
  return (rights & kNeeded) == kNeeded;
}

bool mayReadAllProcesses() {
  std::ifstream file("/proc/self/status");
  // An iterator over the file would throw when the file cannot be read.
  std::string status;
  for (std::string line; std::getline(file, line);)
    status += line + '\n';
  return mayReadAllProcesses(std::string_view(status));
}

}  // namespace platform

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Sleep/ListedInhibitor.h"

namespace platform {

/// One entry of logind's list, in logind's own words.
struct LogindEntry {
  std::string what;
  std::string who;
  std::string why;
  std::string mode;
  std::uint32_t user = 0;
  std::uint32_t process = 0;
};

/// Reads the list in a reply of logind. Absent when the list has an unknown type, or cannot be read
/// to its end.
std::optional<std::vector<LogindEntry>> readLogindList(const BusReply& reply);

/// The inhibitors that logind lists now. Absent when logind cannot be asked, or its list
/// cannot be read. Makes one call of the bus.
std::optional<std::vector<ListedInhibitor>> listLogindInhibitors(Bus& systemBus);

/// Whether `list` contains `lock`. In logind's lists, colons separate the locks.
[[nodiscard]] bool namesLock(std::string_view list, std::string_view lock);

}  // namespace platform

#include "Platform/Linux/Network/NumberedEntries.h"

#include <dirent.h>

#include <array>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string_view>
#include <system_error>

namespace platform {
namespace {

constexpr std::size_t kBufferBytes = std::size_t{4} << 10;

std::optional<std::int32_t> wholeNumber(std::string_view name) {
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
  if (error != std::errc() || end != name.data() + name.size() || number < 0) return std::nullopt;
  return number;
}

}  // namespace

bool visitNumberedEntries(int directory, const std::function<bool(std::int32_t number)>& visit) {
  // The library's own reader takes 32 KiB from the heap for each directory.
  std::array<std::byte, kBufferBytes> buffer;
  for (;;) {
    const ssize_t count = getdents64(directory, buffer.data(), buffer.size());
    if (count <= 0) return count == 0;
    for (std::size_t offset = 0; offset < static_cast<std::size_t>(count);) {
      decltype(dirent64::d_reclen) length = 0;
      std::memcpy(&length, &buffer[offset + offsetof(dirent64, d_reclen)], sizeof length);
      const char* name =
          reinterpret_cast<const char*>(&buffer[offset + offsetof(dirent64, d_name)]);
      const auto number = wholeNumber(name);
      if (number && !visit(*number)) return false;
      offset += length;
    }
  }
}

}  // namespace platform

#include "Platform/Linux/Network/NumberedEntries.h"

#include <dirent.h>

#include <array>
#include <cstddef>
#include <cstring>

#include "Tidewell/TextReading.h"

namespace platform {
namespace {

constexpr std::size_t kBufferBytes = std::size_t{4} << 10;

}  // namespace

bool visitNumberedEntries(int directory, const std::function<bool(std::int32_t number)>& visit) {
  // `readdir` would take 32 KiB from the heap for each directory.
  std::array<std::byte, kBufferBytes> buffer;
  for (;;) {
    const ssize_t count = getdents64(directory, buffer.data(), buffer.size());
    if (count <= 0) return count == 0;
    for (std::size_t offset = 0; offset < static_cast<std::size_t>(count);) {
      decltype(dirent64::d_reclen) length = 0;
      std::memcpy(&length, &buffer[offset + offsetof(dirent64, d_reclen)], sizeof length);
      const char* name =
          reinterpret_cast<const char*>(&buffer[offset + offsetof(dirent64, d_name)]);
      const auto number = tidewell::wholeNumber<std::int32_t>(name);
      if (number && *number >= 0 && !visit(*number)) return false;
      offset += length;
    }
  }
}

}  // namespace platform

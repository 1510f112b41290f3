#include "Platform/Linux/Proc/ProcIo.h"

#include "Tidewell/TextReading.h"

namespace platform {
namespace {

std::optional<std::uint64_t> counter(std::string_view text, std::string_view label) {
  const std::size_t found = text.find(label);
  if (found == std::string_view::npos) return std::nullopt;
  text.remove_prefix(found + label.size());
  return tidewell::takeWholeNumber<std::uint64_t>(text);
}

}  // namespace

std::optional<ProcIo> parseProcIo(std::string_view text) {
  // Because of the line feeds, "cancelled_write_bytes" is not found.
  const auto readBytes = counter(text, "\nread_bytes: ");
  const auto writeBytes = counter(text, "\nwrite_bytes: ");
  if (!readBytes || !writeBytes) return std::nullopt;
  return ProcIo{*readBytes, *writeBytes};
}

}  // namespace platform

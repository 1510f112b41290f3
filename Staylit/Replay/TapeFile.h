#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Staylit/Replay/TapeWriter.h"
#include "Tidewell/Ports/PrivateFolder.h"

namespace staylit {

/// One file of a tape, up to a size. Main thread only.
class TapeFile : public TapeOutput {
 public:
  /// Some weeks of a machine with few programs, some days of one that builds all day.
  static constexpr std::uint64_t kLargest = std::uint64_t{64} << 20;

  explicit TapeFile(std::unique_ptr<tidewell::PrivateFile> file) : file_(std::move(file)) {}

  /// Stops at the largest size, and when something cannot be written.
  Answer append(std::string piece) override;

  /// Why it stopped, for people to read; empty when it did not.
  [[nodiscard]] const std::string& error() const { return error_; }

 private:
  std::unique_ptr<tidewell::PrivateFile> file_;
  std::uint64_t size_ = 0;
  std::string error_;
};

}  // namespace staylit

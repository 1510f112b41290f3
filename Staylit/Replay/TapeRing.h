#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Staylit/Replay/TapeWriter.h"
#include "Tidewell/Ports/PrivateFolder.h"
#include "Tidewell/Ports/SerialQueue.h"

namespace staylit {

/// The last day of a tape, in a folder with files of a limited size, of which the oldest goes when
/// there are too many. A program that is killed leaves what it wrote up to a minute before.
///
/// A queue does all work on the disk, so that the main thread, which this belongs to, never waits;
/// only the destructor waits for some seconds at most. While the disk does not keep up, pieces are
/// lost, and the tape goes on in a new file. Failures are logged once.
class TapeRing : public TapeOutput {
 public:
  static constexpr std::uint64_t kLargestFile = std::uint64_t{256} << 10;
  static constexpr std::uint64_t kLargestInAll = std::uint64_t{4} << 20;

  TapeRing(std::shared_ptr<tidewell::PrivateFolder> folder, tidewell::SerialQueues& queues);
  ~TapeRing() override;
  TapeRing(const TapeRing&) = delete;
  TapeRing& operator=(const TapeRing&) = delete;

  Answer append(std::string piece) override;

  /// The names of the ring's files among `entries`, the oldest first.
  [[nodiscard]] static std::vector<std::string> filesOf(
      const std::vector<tidewell::PrivateFolder::Entry>& entries);

 private:
  struct Shared;

  std::shared_ptr<Shared> shared_;
  std::unique_ptr<tidewell::SerialQueue> queue_;
  std::uint64_t size_ = 0;  ///< Of the present file.
};

}  // namespace staylit

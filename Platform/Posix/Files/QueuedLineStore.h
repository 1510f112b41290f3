#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "Platform/Posix/Files/LineFiles.h"
#include "Tidewell/Ports/LineStore.h"
#include "Tidewell/Ports/SerialQueue.h"

namespace platform {

/// Lines in files, which a queue of its own makes and writes. Where the disk never answers, the
/// queue is left behind at the end.
class QueuedLineStore : public tidewell::LineStore {
 public:
  /// `what` is for the log: what the lines are. The queue's thread should have descriptors of its
  /// own where there is such a thing, because the disk may hold it for long.
  QueuedLineStore(LineFiles files, std::string what, std::unique_ptr<tidewell::SerialQueue> queue,
                  std::chrono::milliseconds finishTimeout = std::chrono::seconds(2));
  ~QueuedLineStore() override;
  QueuedLineStore(const QueuedLineStore&) = delete;
  QueuedLineStore& operator=(const QueuedLineStore&) = delete;

  void append(Line line) override;
  void refresh() override;
  void finishWriting() override;

 private:
  struct State;
  void submit(std::function<void(State&)> work);
  bool waitForWriting();

  const std::chrono::milliseconds finishTimeout_;
  std::shared_ptr<State> state_;
  std::unique_ptr<tidewell::SerialQueue> queue_;
};

}  // namespace platform

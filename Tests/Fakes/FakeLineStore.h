#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Tests/Fakes/CallLog.h"
#include "Tidewell/Ports/LineStore.h"

namespace tidewell {

/// A store in memory that makes each line at once.
class FakeLineStore : public LineStore {
 public:
  explicit FakeLineStore(std::shared_ptr<CallLog> calls = std::make_shared<CallLog>())
      : calls_(std::move(calls)) {}

  void append(Line line) override { lines.push_back(line(lastWritten)); }
  void refresh() override { ++refreshed; }
  void finishWriting() override { calls_->add("finish writing lines"); }

  std::vector<std::string> lines;
  std::optional<WallTime> lastWritten;
  int refreshed = 0;

 private:
  std::shared_ptr<CallLog> calls_;
};

}  // namespace tidewell

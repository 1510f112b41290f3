#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

#include "Tidewell/Ports/TaskLauncher.h"

namespace platform {

/// A tool that has ended already and whose output is at hand.
class PreparedTask : public tidewell::Task {
 public:
  explicit PreparedTask(std::string output) : output_(std::move(output)) {}

  std::optional<std::string> readToEnd(std::size_t limit) override {
    if (output_.size() > limit) return std::nullopt;
    return std::exchange(output_, {});
  }
  bool isRunning() override { return false; }
  void terminate() override {}

 private:
  std::string output_;
};

}  // namespace platform

#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Tidewell/Ports/PowerManagement.h"

/// Holds nothing, and remembers when what would have been held. Main thread only.
class RecordingPower : public tidewell::PowerManagement {
 public:
  using SteadyTime = std::chrono::steady_clock::time_point;

  struct Event {
    SteadyTime at;
    std::string_view what;  ///< "create", "rename" or "release".
    std::string name;       ///< Empty for a release.
  };

  Creation createAssertion(tidewell::AssertionKind, const std::string& name) override {
    record("create", name);
    ++live_;
    return {0, ++last_};
  }
  void setAssertionName(std::uint32_t, const std::string& name) override { record("rename", name); }
  void releaseAssertion(std::uint32_t) override {
    record("release", {});
    --live_;
  }
  bool isGranted() override { return true; }
  std::vector<LiveAssertion> liveAssertions() override { return {}; }

  [[nodiscard]] bool isHolding() const { return live_ > 0; }
  [[nodiscard]] const std::vector<Event>& events() const { return events_; }

 private:
  void record(std::string_view what, const std::string& name) {
    events_.push_back({std::chrono::steady_clock::now(), what, name});
  }

  std::vector<Event> events_;
  std::uint32_t last_ = 0;
  int live_ = 0;
};

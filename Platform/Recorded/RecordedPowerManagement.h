#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Tidewell/Ports/PowerManagement.h"

namespace platform {

/// Power management for a machine that has none: hands out ids and keeps names, so that the program
/// runs and reports, but nothing is held awake. Says so once in the log. Never fails.
class RecordedPowerManagement : public tidewell::PowerManagement {
 public:
  struct Assertion {
    tidewell::AssertionKind kind = tidewell::AssertionKind::system;
    std::string name;
  };

  Creation createAssertion(tidewell::AssertionKind kind, const std::string& name) override;
  void setAssertionName(std::uint32_t id, const std::string& name) override;
  void releaseAssertion(std::uint32_t id) override;
  bool isGranted() override { return assertions_.empty(); }
  std::vector<LiveAssertion> liveAssertions() override;

  /// What is recorded now, by id.
  [[nodiscard]] const std::map<std::uint32_t, Assertion>& assertions() const { return assertions_; }

 private:
  std::map<std::uint32_t, Assertion> assertions_;
  std::uint32_t lastId_ = 0;
  bool saidSo_ = false;
};

}  // namespace platform

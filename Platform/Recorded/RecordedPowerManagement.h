#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Tidewell/Ports/PowerManagement.h"

namespace platform {

/// Stands in for power management on a machine without it. It gives ids and keeps names, so that
/// the program runs and reports, but keeps nothing awake. The log says so once. It never fails.
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

#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Tidewell/Ports/PowerManagement.h"

namespace platform {

/// Assertions of IOKit's power management; the system drops them when this process ends. Names
/// are cut to the 128 characters that the system allows.
class IOKitPowerManagement final : public tidewell::PowerManagement {
 public:
  Creation createAssertion(tidewell::AssertionKind kind, const std::string& name) override;
  void setAssertionName(std::uint32_t id, const std::string& name) override;
  void releaseAssertion(std::uint32_t id) override;
  bool isGranted() override { return true; }
  std::vector<LiveAssertion> liveAssertions() override;

 private:
  struct Assertion {
    tidewell::AssertionKind kind = tidewell::AssertionKind::system;
    std::string name;
  };
  std::map<std::uint32_t, Assertion> live_;
};

}  // namespace platform

#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Tidewell/Ports/PowerManagement.h"

namespace staylit {

/// Keeps account of assertions and holds nothing, for an engine that only looks. Each assertion
/// counts as granted by one service of the given name.
class AccountedHolds : public tidewell::PowerManagement {
 public:
  explicit AccountedHolds(std::string service) : service_(std::move(service)) {}

  Creation createAssertion(tidewell::AssertionKind kind, const std::string& name) override {
    live_.emplace(++lastId_, LiveAssertion{kind, name, {{service_, {}}}});
    return {0, lastId_};
  }
  void setAssertionName(std::uint32_t id, const std::string& name) override {
    if (const auto found = live_.find(id); found != live_.end()) found->second.name = name;
  }
  void releaseAssertion(std::uint32_t id) override { live_.erase(id); }
  bool isGranted() override { return true; }
  std::vector<LiveAssertion> liveAssertions() override {
    std::vector<LiveAssertion> all;
    for (const auto& [id, assertion] : live_)
      all.push_back(assertion);
    return all;
  }

 private:
  std::string service_;
  std::map<std::uint32_t, LiveAssertion> live_;
  std::uint32_t lastId_ = 0;
};

}  // namespace staylit

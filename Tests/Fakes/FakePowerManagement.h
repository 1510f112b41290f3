#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Tests/Fakes/CallLog.h"
#include "Tidewell/Ports/PowerManagement.h"

namespace tidewell {

/// Hands out the identifiers 1, 2, 3, … and remembers what is held under each.
class FakePowerManagement : public PowerManagement {
 public:
  struct Assertion {
    AssertionKind kind = AssertionKind::system;
    std::string name;
    friend bool operator==(const Assertion&, const Assertion&) = default;
  };

  explicit FakePowerManagement(std::shared_ptr<CallLog> shared = std::make_shared<CallLog>())
      : shared_(std::move(shared)) {}

  Creation createAssertion(AssertionKind kind, const std::string& name) override {
    const bool isDisplay = kind == AssertionKind::display;
    record(std::string("create ") + (isDisplay ? "display" : "system") + " '" + name + "'");
    const std::int32_t code = isDisplay ? displayFailure : systemFailure;
    if (code != 0) return {code, kNoIdentifier};
    live.emplace(++last_, Assertion{kind, name});
    return {0, last_};
  }

  void setAssertionName(std::uint32_t id, const std::string& name) override {
    record("rename " + std::to_string(id) + " '" + name + "'");
    live.at(id).name = name;
  }

  void releaseAssertion(std::uint32_t id) override {
    record("release " + std::to_string(id));
    live.erase(id);
  }

  bool isGranted() override { return live.empty() || granted; }
  std::string whyNotGranted() override { return why; }

  std::vector<LiveAssertion> liveAssertions() override {
    std::vector<LiveAssertion> assertions;
    for (const auto& [id, assertion] : live) {
      assertions.push_back(
          {assertion.kind, assertion.name, granted ? grants : std::vector<Grant>()});
    }
    return assertions;
  }

  /// The names of what is held now, in the order of creation.
  [[nodiscard]] std::vector<std::string> liveNames() const {
    std::vector<std::string> names;
    for (const auto& [id, assertion] : live)
      names.push_back(assertion.name);
    return names;
  }

  std::int32_t systemFailure = 0;   ///< The code of every creation of a system assertion.
  std::int32_t displayFailure = 0;  ///< The same for display assertions.
  bool granted = true;              ///< Whether the live assertions are granted.
  std::string why;                  ///< Why not.
  /// Who keeps each live assertion while `granted`.
  std::vector<Grant> grants{{"org.example.Sleep", std::nullopt}};
  std::map<std::uint32_t, Assertion> live;
  std::vector<std::string> calls;

 private:
  /// An identifier that a failed creation may leave behind, and that nobody may use.
  static constexpr std::uint32_t kNoIdentifier = 4711;

  void record(const std::string& call) {
    calls.push_back(call);
    shared_->add(call);
  }

  std::shared_ptr<CallLog> shared_;
  std::uint32_t last_ = 0;
};

}  // namespace tidewell

#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Tests/Fakes/CallLog.h"
#include "Tidewell/Ports/RunningApplications.h"

namespace tidewell {

/// An application that counts how often its properties are asked for.
class FakeRunningApplication : public RunningApplication {
 public:
  FakeRunningApplication(std::int32_t pid, std::optional<std::string> bundleIdentifier,
                         std::optional<std::string> localizedName,
                         std::shared_ptr<int> propertiesAsked)
      : pid_(pid),
        bundleIdentifier_(std::move(bundleIdentifier)),
        localizedName_(std::move(localizedName)),
        propertiesAsked_(std::move(propertiesAsked)) {}

  std::int32_t processIdentifier() const override { return pid_; }
  const std::optional<std::string>& bundleIdentifier() const override {
    ++*propertiesAsked_;
    return bundleIdentifier_;
  }
  const std::optional<std::string>& localizedName() const override {
    ++*propertiesAsked_;
    return localizedName_;
  }

 private:
  std::int32_t pid_;
  std::optional<std::string> bundleIdentifier_;
  std::optional<std::string> localizedName_;
  std::shared_ptr<int> propertiesAsked_;
};

/// A list of applications that the test fills. `FakeProcessTable` puts it into its snapshots.
class FakeRunningApplications : public RunningApplications {
 public:
  explicit FakeRunningApplications(std::shared_ptr<CallLog> calls = std::make_shared<CallLog>())
      : calls_(std::move(calls)) {}

  std::vector<std::shared_ptr<const RunningApplication>> list() {
    calls_->add("list applications");
    return applications_;
  }

  std::shared_ptr<const RunningApplication> withProcessIdentifier(std::int32_t pid) override {
    const auto found = std::ranges::find(applications_, pid,
                                         [](const auto& app) { return app->processIdentifier(); });
    return found == applications_.end() ? nullptr : *found;
  }

  void add(std::int32_t pid, std::optional<std::string> bundleIdentifier,
           std::optional<std::string> localizedName) {
    applications_.push_back(std::make_shared<FakeRunningApplication>(
        pid, std::move(bundleIdentifier), std::move(localizedName), propertiesAsked_));
  }

  void clear() { applications_.clear(); }

  /// How often somebody asked for an identifier or a name.
  [[nodiscard]] int propertiesAsked() const { return *propertiesAsked_; }

 private:
  std::shared_ptr<CallLog> calls_;
  std::shared_ptr<int> propertiesAsked_ = std::make_shared<int>(0);
  std::vector<std::shared_ptr<const RunningApplication>> applications_;
};

}  // namespace tidewell

#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "Platform/Linux/Processes/ApplicationResolver.h"
#include "Tidewell/Ports/RunningApplications.h"

namespace platform {

/// One process of an application.
class LinuxApplication : public tidewell::RunningApplication {
 public:
  LinuxApplication(std::int32_t pid, std::shared_ptr<const ApplicationIdentity> identity)
      : pid_(pid), identity_(std::move(identity)) {}

  [[nodiscard]] std::int32_t processIdentifier() const override { return pid_; }
  [[nodiscard]] const std::optional<std::string>& bundleIdentifier() const override {
    return identity_->bundleIdentifier;
  }
  [[nodiscard]] const std::optional<std::string>& localizedName() const override {
    return identity_->localizedName;
  }

 private:
  std::int32_t pid_;
  std::shared_ptr<const ApplicationIdentity> identity_;
};

}  // namespace platform

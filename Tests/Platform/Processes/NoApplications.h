#pragma once

#include <memory>

#include "Platform/Linux/Processes/ApplicationResolver.h"

namespace platform {

/// No process belongs to an application.
class NoApplications : public ApplicationResolver {
 public:
  std::shared_ptr<const ApplicationIdentity> applicationOf(const ProcessFacts&) override {
    return nullptr;
  }
  void refresh() override {}
};

}  // namespace platform

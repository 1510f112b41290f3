#pragma once

#include <string>

#include "Tidewell/Ports/ProcessInfo.h"

namespace tidewell {

/// Names the process as the test says.
class FakeProcessInfo : public ProcessInfo {
 public:
  std::string processName() override {
    ++asked;
    return name;
  }

  std::string name = "tidewell-tests";
  int asked = 0;
};

}  // namespace tidewell

#pragma once

#include <string>

namespace platform {

/// Names a signal of an object of a service.
struct BusSignal {
  std::string sender;
  std::string path;
  std::string interface;
  std::string member;
};

}  // namespace platform

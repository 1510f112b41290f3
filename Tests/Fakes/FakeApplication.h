#pragma once

#include <functional>

#include "Staylit/Application.h"

namespace staylit {

/// A program without an event loop. The test decides what happens while it runs.
class FakeApplication : public Application {
 public:
  void run(ApplicationDelegate& delegate) override {
    ++runs;
    if (whileRunning) whileRunning(delegate);
  }

  int runs = 0;
  std::function<void(ApplicationDelegate&)> whileRunning;
};

}  // namespace staylit

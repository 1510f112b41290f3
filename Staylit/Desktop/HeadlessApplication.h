#pragma once

#include "Platform/Linux/Loop/EventLoop.h"
#include "Staylit/Application.h"

namespace staylit {

/// Staylit without a display: nothing but the loop, until a signal asks it to end (SIGTERM, SIGINT
/// or SIGHUP). `loop` must outlive it.
class HeadlessApplication : public Application {
 public:
  explicit HeadlessApplication(platform::EventLoop& loop);

  void run(ApplicationDelegate& delegate) override;

 private:
  platform::EventLoop& loop_;
};

}  // namespace staylit

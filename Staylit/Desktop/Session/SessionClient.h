#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"

namespace staylit {

/// The program as a client of the desktop's session manager (`org.gnome.SessionManager`). It agrees
/// at once whenever the manager wants to end the session. It does not connect the bus by itself.
/// Main thread only; the bus must outlive it.
class SessionClient {
 public:
  /// The loop calls `end` when the session ends, or when its manager wants the program to end.
  SessionClient(platform::Bus& sessionBus, std::function<void()> end);
  SessionClient(const SessionClient&) = delete;
  SessionClient& operator=(const SessionClient&) = delete;

 private:
  void registerWithManager();
  void becameClient(const std::string& path);
  void agree();

  platform::Bus& bus_;
  std::function<void()> end_;
  std::string startupId_;
  std::string path_;
  platform::BusSlot registration_;
  std::vector<platform::BusListening> signals_;
  platform::BusListening manager_;
};

}  // namespace staylit

#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Linux/Bus/BusHandles.h"
#include "Platform/Linux/Bus/BusListener.h"
#include "Tidewell/Ports/MainLoop.h"

namespace platform {

/// Follows who owns a name, and believes only the bus itself about it. See `Bus::watchName`.
class NameWatch : public BusListener {
 public:
  using Callback = std::function<void(bool owned)>;

  /// `loop` must outlive the watch.
  NameWatch(tidewell::MainLoop& loop, std::string name, Callback callback);

  void connected(sd_bus* bus) override;
  void disconnected() override;
  [[nodiscard]] std::optional<bool> isOwned(std::string_view name) const override;
  void learn(std::string_view name, bool owned) override;

  /// Whether `sender` (a unique name, or null) owns the name. While a message is handled, the
  /// answer is that for the moment when the bus delivered the message.
  [[nodiscard]] bool isOwner(const char* sender) const;

 private:
  static int ownerChanged(sd_bus_message* message, void* data, sd_bus_error* error);
  static int ownerTold(sd_bus_message* reply, void* data, sd_bus_error* error);
  void askForOwner(sd_bus* bus);
  void report(bool owned);
  void deliver(const BusListening& keep);

  tidewell::MainLoop& loop_;
  std::string name_;
  Callback callback_;
  BusSlot match_;
  BusSlot query_;
  std::string owner_;  ///< Empty while there is no owner, or none is known yet.
  std::optional<bool> known_;
  std::optional<bool> reported_;
  std::deque<bool> undelivered_;
};

}  // namespace platform

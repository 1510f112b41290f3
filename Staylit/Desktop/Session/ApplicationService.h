#pragma once

#include <systemd/sd-bus.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Bus/BusObject.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Staylit/Menu.h"
#include "Tidewell/WeakReference.h"

namespace staylit {

/// Makes the program the only one of its kind in the session: it owns the name `com.staylit.app`
/// and serves `org.freedesktop.Application` there, so that a second start reaches the first.
///
/// Main thread only; both arguments must outlive it.
class ApplicationService {
 public:
  static constexpr const char* kName = "com.staylit.app";
  static constexpr const char* kPath = "/com/staylit/app";
  static constexpr const char* kInterface = "org.freedesktop.Application";

  /// The action that other programs of the session ask for by `name`: "pause" (which also resumes),
  /// "choose-apps", "settings" or "quit".
  static std::optional<MenuItem::Action> action(std::string_view name);

  /// `perform` does what was asked for, and returns why it cannot be done, or an empty text. The
  /// loop calls it, never a call from the bus itself.
  using Perform = std::function<std::string(MenuItem::Action)>;
  ApplicationService(platform::EventLoop& loop, platform::Bus& sessionBus, Perform perform);
  ApplicationService(const ApplicationService&) = delete;
  ApplicationService& operator=(const ApplicationService&) = delete;

  /// What a start of the program wants from the one that already runs in the session.
  struct Request {
    /// A name that `action` knows. Empty when the running program is to show its window.
    std::string action;
    /// Whether this start only wants that some program runs. It then asks the running one nothing.
    bool isBackground = false;
  };

  /// Which program has the name, as far as `claim` found out.
  enum class Claim {
    first,   ///< This program has the name, or there is no session bus.
    second,  ///< Another program has the name and has been asked for what this start wants.
    beside,  ///< Another program has the name and does not answer. This one gets it when that ends.
  };
  /// Takes the name, or passes the request to its owner and waits a few seconds at most for the
  /// answer. Only a start that wants nothing but to run goes on beside an owner that does not
  /// answer. If that owner answers after all, the loop calls `leave`, because there is to be only
  /// one program. Call it once, before the loop runs.
  Claim claim(const Request& request, std::function<void()> leave);
  /// Why the owner that was asked did nothing; empty when it did what was asked for.
  [[nodiscard]] const std::string& refusal() const { return refusal_; }

 private:
  static int activate(sd_bus_message* call, void* data, sd_bus_error* error);
  static int open(sd_bus_message* call, void* data, sd_bus_error* error);
  static int activateAction(sd_bus_message* call, void* data, sd_bus_error* error);
  static const sd_bus_vtable kTable[];

  enum class Answer { done, gone, none };
  bool findOwner();
  Answer askOwner(const Request& request);
  bool ask(const Request& request);
  void answered(const platform::BusReply& reply);
  Claim goOnBeside(const Request& request, std::function<void()> leave);
  void keepName();
  int obey(sd_bus_message* call, MenuItem::Action action);

  platform::EventLoop& loop_;
  platform::Bus& bus_;
  Perform perform_;
  platform::BusObject object_;
  platform::BusListening connection_;
  platform::BusSlot request_;
  std::string owner_;  ///< The unique name of the owner that was asked.
  platform::BusSlot question_;
  std::optional<Answer> answer_;
  std::string refusal_;
  std::function<void()> leave_;  ///< Set while this one runs beside the owner.
  tidewell::WeakReferenceSource<ApplicationService> self_{*this};  ///< For work that is posted.
};

}  // namespace staylit

#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Tests/Platform/Support/RunUntil.h"
#include "Tests/Shell/Support/Message.h"

namespace staylit::testing {

/// A panel on a connection of its own, which the test's loop runs.
class Host {
 public:
  using Arguments = platform::Bus::Arguments;

  /// Talks to the program that owns the name `service`.
  Host(platform::EventLoop& loop, std::string service)
      : loop_(loop), service_(std::move(service)), bus_(loop, platform::Bus::Kind::session) {
    bus_.connect();
  }

  platform::Bus& bus() { return bus_; }

  /// The reply of a call, or the name of its error in angle brackets.
  std::string call(const char* path, const char* interface, const char* member,
                   const Arguments& arguments = {}) {
    std::optional<std::string> answer;
    const platform::BusSlot slot =
        bus_.callAsync({service_.c_str(), path, interface, member}, arguments,
                       [&answer](const platform::BusReply& reply) {
                         answer = reply ? textOf(reply.message.get()) : "<" + reply.errorName + ">";
                       });
    if (!slot || !platform::testing::runUntil(loop_, [&] { return answer.has_value(); })) {
      return "<nothing>";
    }
    return *answer;
  }

  std::string menuCall(const char* member, const Arguments& arguments = {}) {
    return call("/MenuBar", "com.canonical.dbusmenu", member, arguments);
  }
  std::string property(const char* path, const char* interface, const char* name) {
    return call(path, "org.freedesktop.DBus.Properties", "Get", [=](sd_bus_message* message) {
      return sd_bus_message_append(message, "ss", interface, name);
    });
  }
  std::string itemProperty(const char* name) {
    return property("/StatusNotifierItem", "org.kde.StatusNotifierItem", name);
  }

  std::string layout(std::int32_t parent = 0, std::int32_t depth = -1,
                     const std::vector<std::string>& names = {}) {
    return menuCall("GetLayout", [&](sd_bus_message* message) {
      sd_bus_message_append(message, "ii", parent, depth);
      return appendTexts(message, names);
    });
  }
  std::string groupProperties(const std::vector<std::int32_t>& ids,
                              const std::vector<std::string>& names = {}) {
    return menuCall("GetGroupProperties", [&](sd_bus_message* message) {
      appendNumbers(message, ids);
      return appendTexts(message, names);
    });
  }
  std::string event(std::int32_t id, const char* type) {
    return menuCall("Event", [=](sd_bus_message* message) {
      return sd_bus_message_append(message, "isvu", id, type, "i", 0, 0U);
    });
  }
  std::string aboutToShow(std::int32_t id) {
    return menuCall("AboutToShow", [=](sd_bus_message* message) {
      return sd_bus_message_append(message, "i", id);
    });
  }

  /// The number of the item with this label in the present layout; -1 when there is none.
  std::int32_t idOf(const std::string& label) {
    const std::string text = layout(0, -1, {"label"});
    const auto found = text.find(" ['label' '" + label + "']");
    if (found == std::string::npos) return -1;
    const auto begin = text.rfind('(', found) + 1;
    return std::stoi(text.substr(begin, found - begin));
  }
  std::uint32_t revision() { return static_cast<std::uint32_t>(std::stoul(layout(0, 0))); }

  /// Keeps every signal of an object, as "Member values".
  void listen(const char* path, const char* interface, const std::vector<const char*>& members) {
    for (const char* member : members) {
      listening_.push_back(bus_.subscribe(
          {service_, path, interface, member}, [this, member](sd_bus_message* message) {
            const std::string values = textOf(message);
            signals.push_back(member + (values.empty() ? "" : " " + values));
          }));
    }
    // The answer comes after the bus has begun to pass on the signals.
    call("/", "org.freedesktop.DBus.Peer", "Ping");
  }
  void listenToMenu() {
    listen("/MenuBar", "com.canonical.dbusmenu", {"LayoutUpdated", "ItemsPropertiesUpdated"});
  }

  std::vector<std::string> signals;
  bool hasSignal(const std::string& wanted) const {
    return std::ranges::find(signals, wanted) != signals.end();
  }

  static int appendNumbers(sd_bus_message* message, const std::vector<std::int32_t>& numbers) {
    return sd_bus_message_append_array(message, 'i', numbers.data(),
                                       numbers.size() * sizeof(std::int32_t));
  }
  static int appendTexts(sd_bus_message* message, const std::vector<std::string>& texts) {
    sd_bus_message_open_container(message, 'a', "s");
    for (const std::string& text : texts)
      sd_bus_message_append(message, "s", text.c_str());
    return sd_bus_message_close_container(message);
  }

 private:
  platform::EventLoop& loop_;
  std::string service_;
  platform::Bus bus_;
  std::vector<platform::BusListening> listening_;
};

/// A panel that behaves as XFCE's does: it shows the items that it knows at once, in a menu whose
/// height then stays, and only afterwards asks whether they are right. It reads the layout whenever
/// it is told of another, and never says that it has opened or closed the menu.
class HastyPanel {
 public:
  HastyPanel(platform::EventLoop& loop, const std::string& service) : host_(loop, service) {
    host_.listenToMenu();
    items_ = countItems();
  }

  void showMenu() {
    readIfTold();
    height_ = items_;
    host_.menuCall("AboutToShowGroup",
                   [](sd_bus_message* message) { return Host::appendNumbers(message, {0}); });
    readIfTold();
  }
  /// How many items the menu has, and for how many there was room when it was shown last.
  std::size_t items() {
    readIfTold();
    return items_;
  }
  [[nodiscard]] std::size_t height() const { return height_; }

 private:
  std::size_t countItems() {
    const std::string layout = host_.layout(0, -1, {"none"});
    return static_cast<std::size_t>(std::ranges::count(layout, '(')) - 1;  // Without the root.
  }
  void readIfTold() {
    const auto isLayout = [](const std::string& one) { return one.starts_with("LayoutUpdated"); };
    if (std::ranges::none_of(host_.signals, isLayout)) return;
    host_.signals.clear();
    items_ = countItems();
  }

  Host host_;
  std::size_t items_ = 0;
  std::size_t height_ = 0;
};

}  // namespace staylit::testing

#include "Platform/Linux/Bus/RemoteProperties.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

namespace platform {
namespace {

using tidewell::PropertyDictionary;
using tidewell::PropertyValue;

constexpr std::size_t kLongestText = 256;
constexpr const char* kPropertiesInterface = "org.freedesktop.DBus.Properties";

template <class Raw, class Value>
bool readAs(sd_bus_message* message, char type, PropertyValue& value) {
  Raw raw{};
  if (sd_bus_message_read_basic(message, type, &raw) < 0) return false;
  value.emplace<Value>(raw);
  return true;
}

bool readText(sd_bus_message* message, PropertyValue& value) {
  const char* text = nullptr;
  if (sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, &text) < 0) return false;
  if (std::strlen(text) <= kLongestText) value.emplace<std::string>(text);
  return true;
}

/// Reads a value of a basic type. Leaves `value` as it is for a type that nobody here reads. False
/// when the message is broken.
bool readBasic(sd_bus_message* message, char type, PropertyValue& value) {
  switch (type) {
    case SD_BUS_TYPE_BOOLEAN: {
      int flag = 0;
      if (sd_bus_message_read_basic(message, type, &flag) < 0) return false;
      value.emplace<bool>(flag != 0);
      return true;
    }
    case SD_BUS_TYPE_UINT32:
      return readAs<std::uint32_t, std::int64_t>(message, type, value);
    case SD_BUS_TYPE_INT32:
      return readAs<std::int32_t, std::int64_t>(message, type, value);
    case SD_BUS_TYPE_INT64:
      return readAs<std::int64_t, std::int64_t>(message, type, value);
    case SD_BUS_TYPE_UINT64: {
      std::uint64_t number = 0;
      if (sd_bus_message_read_basic(message, type, &number) < 0) return false;
      // A number beyond that means "for ever" wherever there is one.
      constexpr std::uint64_t kLargest = std::numeric_limits<std::int64_t>::max();
      value.emplace<std::int64_t>(static_cast<std::int64_t>(std::min(number, kLargest)));
      return true;
    }
    case SD_BUS_TYPE_DOUBLE:
      return readAs<double, double>(message, type, value);
    case SD_BUS_TYPE_STRING:
      return readText(message, value);
    default:
      return sd_bus_message_skip(message, nullptr) >= 0;
  }
}

bool readVariant(sd_bus_message* message, PropertyValue& value) {
  value.emplace<std::monostate>();
  char type = 0;
  const char* contents = nullptr;
  if (sd_bus_message_peek_type(message, &type, &contents) <= 0 || type != SD_BUS_TYPE_VARIANT) {
    return false;
  }
  const bool isBasic = contents[0] != '\0' && contents[1] == '\0';
  if (!isBasic) return sd_bus_message_skip(message, "v") >= 0;
  const char basicType = contents[0];
  return sd_bus_message_enter_container(message, SD_BUS_TYPE_VARIANT, contents) >= 0 &&
         readBasic(message, basicType, value) && sd_bus_message_exit_container(message) >= 0;
}

/// Reads the wanted entries of an `a{sv}`. Absent when the message is broken, or when it has a text
/// that sd-bus does not read.
std::optional<PropertyDictionary> readDictionary(sd_bus_message* message,
                                                 const RemoteProperties::Names& wanted) {
  if (sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "{sv}") < 0) return std::nullopt;
  PropertyDictionary properties;
  int entered = 0;
  while ((entered = sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv")) > 0) {
    const char* name = nullptr;
    if (sd_bus_message_read(message, "s", &name) < 0) return std::nullopt;
    const bool isRead = wanted.contains(std::string_view(name))
                            ? readVariant(message, properties[name])
                            : sd_bus_message_skip(message, "v") >= 0;
    if (!isRead || sd_bus_message_exit_container(message) < 0) return std::nullopt;
  }
  if (entered < 0 || sd_bus_message_exit_container(message) < 0) return std::nullopt;
  return properties;
}

/// Whether an `as` names a wanted property.
bool namesAny(sd_bus_message* message, const RemoteProperties::Names& wanted) {
  const char* name = nullptr;
  if (sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "s") < 0) return false;
  while (sd_bus_message_read(message, "s", &name) > 0) {
    if (wanted.contains(std::string_view(name))) return true;
  }
  return false;
}

}  // namespace

struct RemoteProperties::State {
  Bus& bus;
  std::string service;
  std::string path;
  std::string interface;
  Names wanted;
  BusActivation activation;
  std::optional<PropertyDictionary> values{};
  bool wasAsked = false;
  BusListening changes{};
  BusListening presence{};
  BusSlot pending{};

  [[nodiscard]] BusMethod getAll(BusActivation start) const {
    return {service.c_str(), path.c_str(), kPropertiesInterface, "GetAll", start};
  }

  int appendInterface(sd_bus_message* message) const {
    return sd_bus_message_append(message, "s", interface.c_str());
  }

  void accept(sd_bus_message* reply) {
    if (auto all = readDictionary(reply, wanted)) values = std::move(all);
  }

  void refresh() {
    pending = bus.callAsync(
        getAll(BusActivation::never),
        [this](sd_bus_message* message) { return appendInterface(message); },
        [this](BusReply reply) {
          if (reply) accept(reply.message.get());
        });
  }

  void appeared(bool owned) {
    if (!owned) {
      values.reset();
      pending.reset();
    } else if (!values) {
      refresh();
    }
  }

  void changed(sd_bus_message* message) {
    const char* changedInterface = nullptr;
    if (sd_bus_message_read(message, "s", &changedInterface) < 0) return;
    if (changedInterface != interface) return;
    if (!values) {
      // The first answer may have been unreadable.
      if (wasAsked) refresh();
      return;
    }
    auto told = readDictionary(message, wanted);
    // Properties that the signal names without their values have to be read.
    if (!told || namesAny(message, wanted)) refresh();
    if (!told) return;
    for (auto& [name, value] : *told)
      values->insert_or_assign(name, std::move(value));
  }
};

RemoteProperties::RemoteProperties(Bus& bus, std::string service, std::string path,
                                   std::string interface, Names wanted, BusActivation activation)
    : state_(std::make_unique<State>(State{bus, std::move(service), std::move(path),
                                           std::move(interface), std::move(wanted), activation})) {
  State& state = *state_;
  const BusSignal signal{state.service, state.path, kPropertiesInterface, "PropertiesChanged"};
  state.changes =
      bus.subscribe(signal, [&state](sd_bus_message* message) { state.changed(message); });
  state.presence = bus.watchName(state.service, [&state](bool owned) { state.appeared(owned); });
}

RemoteProperties::~RemoteProperties() = default;

const tidewell::PropertyDictionary* RemoteProperties::read() {
  State& state = *state_;
  if (!state.values && !state.wasAsked) {
    state.wasAsked = true;
    const BusReply reply = state.bus.call(
        state.getAll(state.activation),
        [&state](sd_bus_message* message) { return state.appendInterface(message); });
    if (reply) state.accept(reply.message.get());
  }
  return state.values ? &*state.values : nullptr;
}

}  // namespace platform

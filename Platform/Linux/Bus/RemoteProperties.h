#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// Some properties of one interface of an object. They are read once and then kept fresh by the
/// PropertiesChanged signal, so that reading them here costs no call. Main thread only.
class RemoteProperties {
 public:
  using Names = std::set<std::string, std::less<>>;

  /// Keeps the `wanted` properties, whatever else the service tells. `activation` says whether the
  /// first reading may start the service; later readings never do. `bus` must outlive this object.
  RemoteProperties(Bus& bus, std::string service, std::string path, std::string interface,
                   Names wanted, BusActivation activation = BusActivation::never);
  ~RemoteProperties();

  /// The properties, or null while the service is not there or has never told them in a readable
  /// form. What can be read only in part changes nothing. Values other than numbers, truth values
  /// and texts of up to 256 bytes become `std::monostate`. The first call waits for the answer,
  /// within the bus's limit. Without a running loop, that is the only reading.
  const tidewell::PropertyDictionary* read();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace platform

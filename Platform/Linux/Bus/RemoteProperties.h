#pragma once

#include <memory>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Tidewell/Ports/PropertyValue.h"

namespace platform {

/// The properties of one interface of an object, read once and kept fresh by its PropertiesChanged
/// signal, so that reading them costs no call. Main thread only.
class RemoteProperties {
 public:
  /// `activation` says whether the first reading may start the service; later ones never do.
  /// `bus` must outlive this.
  RemoteProperties(Bus& bus, std::string service, std::string path, std::string interface,
                   BusActivation activation = BusActivation::never);
  ~RemoteProperties();

  /// The properties, with `std::monostate` for all but numbers, texts and truth values, or null
  /// while the service is not there. The first call waits for the answer, within the bus's limit;
  /// without a running loop that is all that is ever read.
  const tidewell::PropertyDictionary* read();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace platform

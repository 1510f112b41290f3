#include "Platform/Linux/Bus/BusObject.h"

#include <utility>

#include "Platform/Linux/Bus/BusHandles.h"
#include "Tidewell/Log.h"

namespace platform {

BusObject::BusObject(Bus& bus, Place place, const sd_bus_vtable* table, void* data)
    : bus_(bus), place_(std::move(place)), table_(table), data_(data) {
  watch_ = bus_.watchConnection([this](bool) { offer(); });
  offer();
}

void BusObject::offer() {
  if (connection_ == bus_.connectionNumber()) return;
  connection_ = bus_.connectionNumber();
  slot_.reset();
  if (connection_ == 0) return;
  sd_bus_slot* slot = nullptr;
  const int result = sd_bus_add_object_vtable(bus_.handle(), &slot, place_.path.c_str(),
                                              place_.interface.c_str(), table_, data_);
  if (result < 0) tidewell::Log::error("cannot offer " + place_.interface + " on the bus");
  slot_ = BusSlot(slot);
}

void BusObject::emit(const char* member, const Bus::Arguments& arguments) {
  sd_bus* const bus = bus_.handle();
  if (!bus) return;
  sd_bus_message* raw = nullptr;
  if (sd_bus_message_new_signal(bus, &raw, place_.path.c_str(), place_.interface.c_str(), member) <
      0) {
    return;
  }
  const BusMessage message(raw);
  if (arguments && arguments(raw) < 0) return;
  sd_bus_send(bus, raw, nullptr);
}

void BusObject::emitPropertiesChanged(const char* const* names) {
  if (!bus_.handle() || !slot_) return;
  // The function only reads the list, although its type says otherwise.
  sd_bus_emit_properties_changed_strv(bus_.handle(), place_.path.c_str(), place_.interface.c_str(),
                                      const_cast<char**>(names));
}

}  // namespace platform

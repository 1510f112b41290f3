#include "Platform/Linux/Bus/BusObject.h"

#include <system_error>
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
  if (offeredOn_ == bus_.connectionNumber()) return;
  offeredOn_ = bus_.connectionNumber();
  slot_.reset();
  if (offeredOn_ == 0) return;
  sd_bus_slot* slot = nullptr;
  const int result = sd_bus_add_object_vtable(bus_.handle(), &slot, place_.path.c_str(),
                                              place_.interface.c_str(), table_, data_);
  if (result < 0) logFailure("offer", result);
  slot_ = BusSlot(slot);
}

void BusObject::emit(const char* member, const Bus::Arguments& arguments) {
  sd_bus* const bus = bus_.handle();
  if (!bus) return;
  const int result = send(bus, member, arguments);
  if (result < 0) logFailure(std::string("send ") + member + " of", result);
}

int BusObject::send(sd_bus* bus, const char* member, const Bus::Arguments& arguments) const {
  sd_bus_message* raw = nullptr;
  const int made =
      sd_bus_message_new_signal(bus, &raw, place_.path.c_str(), place_.interface.c_str(), member);
  if (made < 0) return made;
  const BusMessage message(raw);
  const int filled = arguments ? arguments(raw) : 0;
  return filled < 0 ? filled : sd_bus_send(bus, raw, nullptr);
}

void BusObject::emitPropertiesChanged(std::vector<const char*> names) {
  if (!bus_.handle() || !slot_) return;
  names.push_back(nullptr);
  // The function only reads the list, although its type says otherwise.
  const int result = sd_bus_emit_properties_changed_strv(bus_.handle(), place_.path.c_str(),
                                                         place_.interface.c_str(),
                                                         const_cast<char**>(names.data()));
  if (result < 0) logFailure("announce the properties of", result);
}

void BusObject::logFailure(const std::string& what, int result) const {
  tidewell::Log::error("cannot " + what + " " + place_.interface +
                       " on the bus: " + std::generic_category().message(-result));
}

}  // namespace platform

#include "Staylit/Desktop/Status/StatusObject.h"

#include <array>
#include <string>
#include <vector>

#include "Staylit/Desktop/Status/StatusMessages.h"
#include "Tidewell/ForeignText.h"

namespace staylit {
namespace {

/// Those of which the table says that their changes are told.
constexpr std::array<const char*, 8> kTold = {"State", "Held", "Reason",     "Since",
                                              "Names", "OnAC", "HasBattery", "LowPowerMode"};

}  // namespace

const sd_bus_vtable StatusObject::kTable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("State", "s", property, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("Held", "b", property, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("Reason", "s", property, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("Since", "x", property, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("Names", "as", property, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("OnAC", "b", property, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("HasBattery", "b", property, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("LowPowerMode", "b", property, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    // These change with every look, and are for those who ask.
    SD_BUS_PROPERTY("Summary", "s", property, 0, 0),
    SD_BUS_PROPERTY("ReleasesIn", "x", property, 0, 0),
    SD_BUS_PROPERTY("ResumesAt", "x", property, 0, 0),
    SD_BUS_PROPERTY("Services", "a(sx)", property, 0, 0),
    SD_BUS_PROPERTY("Busy", "a(sssdddd)", property, 0, 0),
    SD_BUS_PROPERTY("Candidates", "a(sssdddd)", property, 0, 0),
    SD_BUS_PROPERTY("SustainSeconds", "x", property, 0, 0),
    SD_BUS_PROPERTY("Asking", "as", property, 0, 0),
    SD_BUS_PROPERTY("AskingWords", "a(ss)", property, 0, 0),
    SD_BUS_PROPERTY("BatteryPercent", "x", property, 0, 0),
    SD_BUS_SIGNAL_WITH_NAMES("Changed", "ss", SD_BUS_PARAM(state) SD_BUS_PARAM(summary), 0),
    SD_BUS_VTABLE_END};

StatusObject::StatusObject(platform::Bus& bus, StatusReporter& reporter)
    : reporter_(reporter),
      object_(bus, {StatusInterface::kPath, StatusInterface::kName}, kTable, this),
      changes_(reporter.observe([this] { announce(); })) {}

void StatusObject::announce() {
  const StatusReport report = reporter_.report();
  object_.emitPropertiesChanged(std::vector<const char*>(kTold.begin(), kTold.end()));
  object_.emit(StatusInterface::kChanged, [&report](sd_bus_message* signal) {
    return sd_bus_message_append(signal, "ss", std::string(nameOf(report.state)).c_str(),
                                 tidewell::cleaned(report.summary).c_str());
  });
}

int StatusObject::property(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/,
                           const char* name, sd_bus_message* reply, void* data,
                           sd_bus_error* /*error*/) {
  return appendStatusProperty(reply, name, static_cast<StatusObject*>(data)->reporter_.report());
}

}  // namespace staylit

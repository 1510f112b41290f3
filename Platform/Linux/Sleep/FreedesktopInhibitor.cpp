#include "Platform/Linux/Sleep/FreedesktopInhibitor.h"

#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Linux/Sleep/CookieInhibition.h"
#include "Platform/Linux/Sleep/PolicyAgentList.h"
#include "Platform/Linux/Sleep/Services.h"
#include "Tidewell/ForeignText.h"

namespace platform {

FreedesktopInhibitor::FreedesktopInhibitor(Bus& sessionBus, const char* service, const char* path,
                                           const char* interface)
    : sessionBus_(sessionBus), service_(service), path_(path), interface_(interface) {}

FreedesktopInhibitor FreedesktopInhibitor::powerManagement(Bus& sessionBus) {
  return {sessionBus, services::kPowerManagement, "/org/freedesktop/PowerManagement/Inhibit",
          "org.freedesktop.PowerManagement.Inhibit"};
}

FreedesktopInhibitor FreedesktopInhibitor::screenSaver(Bus& sessionBus) {
  return {sessionBus, services::kScreenSaver, "/org/freedesktop/ScreenSaver",
          "org.freedesktop.ScreenSaver"};
}

InhibitMechanism::Taken FreedesktopInhibitor::take(tidewell::AssertionKind /*kind*/,
                                                   const std::string& reason, Late late) {
  const std::string text = told(reason);
  return CookieInhibition::take(
      sessionBus_, {service_, path_, interface_, "Inhibit"},
      [&text](sd_bus_message* message) {
        return sd_bus_message_append(message, "ss", services::kDisplayName, text.c_str());
      },
      "UnInhibit", std::move(late));
}

std::string FreedesktopInhibitor::told(const std::string& reason) const {
  return tidewell::cleaned(reason);
}

std::shared_ptr<void> FreedesktopInhibitor::list(Listed listed) {
  // The screen saver's interface has no list.
  if (std::string_view(service_) != services::kPowerManagement) return nullptr;
  // On KDE the policy agent implements this service, and lists everything that it has granted.
  if (sessionBus_.nameStatus(services::kSolid).isOwned()) return listPolicyAgent(std::move(listed));
  return askWhetherAnybodyInhibits(std::move(listed));
}

std::shared_ptr<void> FreedesktopInhibitor::listPolicyAgent(Listed listed) {
  return asQuestion(sessionBus_.callAsync({services::kPolicyAgent, services::kPolicyAgentPath,
                                           services::kPolicyAgent, "ListInhibitions"},
                                          {}, [listed = std::move(listed)](const BusReply& reply) {
                                            const auto list = readPolicyAgentList(reply);
                                            if (!list) return;
                                            std::vector<std::string> reasons;
                                            for (const PolicyAgentEntry& entry : *list) {
                                              if (entry.application == services::kDisplayName)
                                                reasons.push_back(entry.reason);
                                            }
                                            listed(std::move(reasons));
                                          }));
}

/// The service tells only whether anybody inhibits. If nobody does, it has nothing of this program
/// either.
std::shared_ptr<void> FreedesktopInhibitor::askWhetherAnybodyInhibits(Listed listed) {
  return asQuestion(sessionBus_.callAsync(
      {service_, path_, interface_, "HasInhibit"}, {},
      [listed = std::move(listed)](const BusReply& reply) {
        int isInhibited = 0;
        if (!reply || sd_bus_message_read(reply.message.get(), "b", &isInhibited) <= 0) return;
        if (isInhibited == 0) listed({});
      }));
}

}  // namespace platform

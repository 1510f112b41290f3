#include "Platform/Linux/Sleep/SessionManagerInhibitor.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Linux/Bus/MessageReading.h"
#include "Platform/Linux/Sleep/CookieInhibition.h"
#include "Platform/Linux/Sleep/Services.h"
#include "Tidewell/ForeignText.h"

namespace platform {
namespace {

constexpr std::uint32_t kNoWindow = 0;
/// How many inhibitors a reading asks about, with two to four calls each. The others follow in the
/// next readings.
constexpr std::size_t kMostInhibitors = 8;

/// Whether the reply says that there is no such object, method or property.
bool saysThereIsNone(const BusReply& reply) {
  constexpr std::string_view kUnknown = "org.freedesktop.DBus.Error.Unknown";
  return std::string_view(reply.errorName).starts_with(kUnknown);
}

}  // namespace

/// Reads the list: first the paths, then the application and the reason of each unknown path.
class SessionManagerInhibitor::Reading {
 public:
  Reading(Bus& bus, std::shared_ptr<Known> known, Listed listed)
      : bus_(bus), known_(std::move(known)), listed_(std::move(listed)) {}

  bool begin() {
    call_ = bus_.callAsync({services::kSessionManager, services::kSessionManagerPath,
                            services::kSessionManager, "GetInhibitors"},
                           {}, [this](const BusReply& reply) { havePaths(reply); });
    return static_cast<bool>(call_);
  }

 private:
  void havePaths(const BusReply& reply) {
    if (!reply || readPaths(reply.message.get(), paths_) < 0) return;
    std::erase_if(*known_, [this](const auto& entry) {
      return std::find(paths_.begin(), paths_.end(), entry.first) == paths_.end();
    });
    next();
  }

  /// Asks about the next unknown path. When there is none, tells the result.
  void next() {
    while (index_ < paths_.size() && known_->contains(paths_[index_]))
      ++index_;
    if (index_ == paths_.size()) return tell();
    if (asked_++ == kMostInhibitors) return;
    ask("GetAppId", "app_id", [this](const std::string& application) {
      if (application == services::kApplicationId) return askWhy();
      known_->emplace(paths_[index_], std::nullopt);
      next();
    });
  }

  void askWhy() {
    ask("GetReason", "reason", [this](const std::string& reason) {
      known_->emplace(paths_[index_], reason);
      next();
    });
  }

  /// Some session managers have a method for each detail, others have properties with other names.
  /// An inhibitor that vanishes during the reading gives an empty text. When there is no answer,
  /// the reading ends without a result.
  void ask(const char* method, const char* property,
           const std::function<void(std::string)>& answered) {
    const char* const path = paths_[index_].c_str();
    call_ = bus_.callAsync(
        {services::kSessionManager, path, services::kSessionInhibitor, method}, {},
        [this, path, property, answered](const BusReply& reply) {
          const char* text = nullptr;
          if (reply && sd_bus_message_read(reply.message.get(), "s", &text) > 0) {
            return answered(text);
          }
          if (!saysThereIsNone(reply)) return;
          call_ = bus_.callAsync(
              {services::kSessionManager, path, "org.freedesktop.DBus.Properties", "Get"},
              [property](sd_bus_message* message) {
                return sd_bus_message_append(message, "ss", services::kSessionInhibitor, property);
              },
              [answered](const BusReply& second) {
                const char* value = nullptr;
                const bool isRead =
                    second && sd_bus_message_read(second.message.get(), "v", "s", &value) > 0;
                if (isRead || saysThereIsNone(second)) answered(isRead ? value : "");
              });
        });
  }

  void tell() {
    std::vector<std::string> reasons;
    for (const std::string& path : paths_) {
      if (const auto& reason = known_->at(path)) reasons.push_back(*reason);
    }
    listed_(std::move(reasons));
  }

  Bus& bus_;
  std::shared_ptr<Known> known_;
  Listed listed_;
  BusSlot call_;
  std::vector<std::string> paths_;
  std::size_t index_ = 0;
  std::size_t asked_ = 0;
};

SessionManagerInhibitor::SessionManagerInhibitor(Bus& sessionBus) : sessionBus_(sessionBus) {}

const char* SessionManagerInhibitor::serviceName() const {
  return services::kSessionManager;
}

InhibitMechanism::Taken SessionManagerInhibitor::take(tidewell::AssertionKind kind,
                                                      const std::string& reason, Late late) {
  const std::uint32_t flags = kind == tidewell::AssertionKind::display
                                  ? services::kInhibitsSuspend | services::kInhibitsIdle
                                  : services::kInhibitsSuspend;
  const std::string text = told(reason);
  return CookieInhibition::take(
      sessionBus_,
      {services::kSessionManager, services::kSessionManagerPath, services::kSessionManager,
       "Inhibit"},
      [&](sd_bus_message* message) {
        return sd_bus_message_append(message, "susu", services::kApplicationId, kNoWindow,
                                     text.c_str(), flags);
      },
      "Uninhibit", std::move(late));
}

std::string SessionManagerInhibitor::told(const std::string& reason) const {
  // A session manager refuses an empty reason.
  return reason.empty() ? services::kDisplayName : tidewell::cleaned(reason);
}

std::shared_ptr<void> SessionManagerInhibitor::list(Listed listed) {
  auto reading = std::make_shared<Reading>(sessionBus_, known_, std::move(listed));
  return reading->begin() ? reading : nullptr;
}

}  // namespace platform

#include "Platform/Linux/Sleep/DesktopSetting.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>

#include "Tidewell/ForeignText.h"
#include "Tidewell/TextReading.h"

namespace platform {
namespace {

constexpr std::chrono::seconds kLongestReading{2};
constexpr std::size_t kLongestPrinted = 4096;
constexpr std::string_view kBlanks = " \t\r\n";

/// Terminates a task that takes too long.
std::jthread guard(tidewell::Task& task) {
  return std::jthread([&task](const std::stop_token& stop) {
    std::mutex mutex;
    std::condition_variable_any changed;
    std::unique_lock lock(mutex);
    changed.wait_for(lock, stop, kLongestReading, [] { return false; });
    if (!stop.stop_requested()) task.terminate();
  });
}

}  // namespace

std::string DesktopSettings::printed(const std::string& schema, const std::string& key) const {
  const auto launch = launcher_.launch(tool_, {"get", schema, key});
  if (!launch.task) return "";
  const std::jthread watching = guard(*launch.task);
  return launch.task->readToEnd(kLongestPrinted).value_or("");
}

std::optional<std::int64_t> DesktopSettings::number(const std::string& schema,
                                                    const std::string& key) const {
  return parseSettingNumber(printed(schema, key));
}

std::optional<std::string> DesktopSettings::text(const std::string& schema,
                                                 const std::string& key) const {
  return parseSettingText(printed(schema, key));
}

std::optional<std::int64_t> parseSettingNumber(std::string_view printed) {
  std::string_view text = tidewell::trimmed(printed, kBlanks);
  // A kind of number is named where it is not the usual one.
  text.remove_prefix(text.rfind(' ') + 1);
  return tidewell::wholeNumber<std::int64_t>(text);
}

std::optional<std::string> parseSettingText(std::string_view printed) {
  std::string_view text = tidewell::trimmed(printed, kBlanks);
  const bool isQuoted = text.size() >= 2 && text.front() == '\'' && text.back() == '\'';
  if (!isQuoted) return std::nullopt;
  text = text.substr(1, text.size() - 2);
  if (text.find_first_of("'\\") != std::string_view::npos) return std::nullopt;
  return tidewell::cleaned(text);
}

std::optional<std::int64_t> readXfceSetting(Bus& sessionBus, const std::string& key) {
  const std::string property = "/xfce4-power-manager/" + key;
  const BusReply reply = sessionBus.call(
      {"org.xfce.Xfconf", "/org/xfce/Xfconf", "org.xfce.Xfconf", "GetProperty"},
      [&property](sd_bus_message* message) {
        return sd_bus_message_append(message, "ss", "xfce4-power-manager", property.c_str());
      });
  if (reply.errorName == "org.xfce.Xfconf.Error.PropertyNotFound") return 0;
  if (!reply) return std::nullopt;
  sd_bus_message* const message = reply.message.get();
  std::uint32_t number = 0;
  if (sd_bus_message_read(message, "v", "u", &number) > 0) return number;
  sd_bus_message_rewind(message, 1);
  std::int32_t signedNumber = 0;
  if (sd_bus_message_read(message, "v", "i", &signedNumber) > 0) return signedNumber;
  sd_bus_message_rewind(message, 1);
  int flag = 0;
  if (sd_bus_message_read(message, "v", "b", &flag) > 0) return flag;
  return std::nullopt;
}

bool isNeverForXfce(std::int64_t minutes) {
  // Older versions write 14, newer ones 0; so is one that was never set.
  return minutes == 0 || minutes == 14;
}

}  // namespace platform

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Tests/Fakes/CallLog.h"
#include "Tidewell/Ports/Defaults.h"
#include "Tidewell/PropertyConversion.h"

namespace tidewell {

/// A store in memory, with the same conversions as the real stores.
class FakeDefaults : public Defaults {
 public:
  explicit FakeDefaults(std::shared_ptr<CallLog> calls = std::make_shared<CallLog>())
      : calls_(std::move(calls)) {}

  void registerDefaults(const PropertyDictionary& defaults) override {
    calls_->add("register defaults");
    for (const auto& [key, value] : defaults)
      registered.insert_or_assign(key, value);
  }

  std::int64_t integer(std::string_view key) override { return integerValue(value(key)); }
  double real(std::string_view key) override { return realValue(value(key)); }
  bool boolean(std::string_view key) override { return booleanValue(value(key)); }
  std::optional<std::vector<std::string>> stringList(std::string_view key) override {
    return stringListValue(value(key));
  }

  void setInteger(std::string_view key, std::int64_t value) override { write(key, value); }
  void setReal(std::string_view key, double value) override { write(key, value); }
  void setBoolean(std::string_view key, bool value) override { write(key, value); }
  void setStringList(std::string_view key, const std::vector<std::string>& value) override {
    write(key, value);
  }

  std::vector<std::string> takeRemarks(const SettingMeanings& /*meanings*/) override {
    return std::exchange(remarks, {});
  }

  std::string savingProblem() override { return problem; }

  void finishWriting() override { calls_->add("finish writing"); }

  PropertyDictionary registered;
  PropertyDictionary stored;         ///< What the user has set; a test may put anything here.
  std::string problem;               ///< Why nothing can be written.
  std::vector<std::string> remarks;  ///< On what the user has written; handed over once.
  std::vector<std::string> written;  ///< The key of every write, in order.

 private:
  PropertyValue value(std::string_view key) const {
    if (const auto found = stored.find(key); found != stored.end()) return found->second;
    const auto found = registered.find(key);
    return found == registered.end() ? PropertyValue() : found->second;
  }

  void write(std::string_view key, PropertyValue value) {
    calls_->add("write " + std::string(key));
    written.emplace_back(key);
    stored.insert_or_assign(std::string(key), std::move(value));
  }

  std::shared_ptr<CallLog> calls_;
};

}  // namespace tidewell

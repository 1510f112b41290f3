#pragma once

#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Tests/Fakes/CallLog.h"
#include "Tidewell/Ports/SystemLog.h"

namespace tidewell {

/// Keeps every record. Safe from any thread.
class FakeSystemLog : public SystemLog {
 public:
  struct Record {
    std::string subsystem;
    std::string category;
    LogType type;
    std::string message;
    friend bool operator==(const Record&, const Record&) = default;
  };

  explicit FakeSystemLog(std::shared_ptr<CallLog> calls = std::make_shared<CallLog>())
      : kept_(std::make_shared<Kept>()) {
    kept_->calls = std::move(calls);
  }

  std::shared_ptr<SystemLogger> makeLogger(const std::string& subsystem,
                                           const std::string& category) override {
    kept_->calls->add("make logger " + subsystem);
    return std::make_shared<Logger>(kept_, subsystem, category);
  }

  void disable(LogType type) {
    const std::lock_guard lock(kept_->mutex);
    kept_->disabled.insert(type);
  }

  [[nodiscard]] std::vector<Record> records() const {
    const std::lock_guard lock(kept_->mutex);
    return kept_->records;
  }

  /// Every record as "info: message" or "error: message".
  [[nodiscard]] std::vector<std::string> lines() const {
    std::vector<std::string> lines;
    for (const Record& record : records())
      lines.push_back((record.type == LogType::info ? "info: " : "error: ") + record.message);
    return lines;
  }

 private:
  /// Loggers may outlive the log that made them.
  struct Kept {
    std::mutex mutex;
    std::vector<Record> records;
    std::set<LogType> disabled;
    std::shared_ptr<CallLog> calls;
  };

  class Logger : public SystemLogger {
   public:
    Logger(std::shared_ptr<Kept> kept, std::string subsystem, std::string category)
        : kept_(std::move(kept)),
          subsystem_(std::move(subsystem)),
          category_(std::move(category)) {}

    bool isEnabled(LogType type) override {
      const std::lock_guard lock(kept_->mutex);
      return !kept_->disabled.contains(type);
    }
    void emit(LogType type, const std::string& message) override {
      const std::lock_guard lock(kept_->mutex);
      kept_->records.push_back({subsystem_, category_, type, message});
      kept_->calls->add("log " + message);
    }

   private:
    std::shared_ptr<Kept> kept_;
    std::string subsystem_;
    std::string category_;
  };

  std::shared_ptr<Kept> kept_;
};

}  // namespace tidewell

#pragma once

#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Tests/Fakes/CallLog.h"
#include "Tidewell/Ports/TaskLauncher.h"

namespace tidewell {

/// Launches nothing. Its tasks act as the test says before each launch.
class FakeTaskLauncher : public TaskLauncher {
 public:
  /// How a launch goes.
  struct Script {
    std::string launchError;  ///< Why the launch fails; empty when it succeeds.
    std::string output;
    bool exceedsLimit = false;  ///< Whether the output is longer than the reader takes.
    /// How often `isRunning` answers true after the output has ended.
    int seenRunning = 0;
    bool ignoresTermination = false;
    std::function<void()> whileReading;
  };

  static constexpr int kRunsUntilTerminated = std::numeric_limits<int>::max();

  /// What became of a launched task.
  struct Record {
    std::string executable;
    std::vector<std::string> arguments;
    std::vector<std::size_t> readLimits;
    int terminations = 0;
    bool alive = true;  ///< Whether the task object still exists.
  };

  explicit FakeTaskLauncher(std::shared_ptr<CallLog> calls = std::make_shared<CallLog>())
      : calls_(std::move(calls)) {}

  Launch launch(const std::string& executable, const std::vector<std::string>& arguments) override {
    ++launches;
    std::string call = "launch " + executable;
    for (const std::string& argument : arguments)
      call += ' ' + argument;
    calls_->add(call);
    if (!script.launchError.empty()) return {nullptr, script.launchError};
    auto record = std::make_shared<Record>();
    record->executable = executable;
    record->arguments = arguments;
    tasks.push_back(record);
    return {std::make_unique<FakeTask>(script, std::move(record)), ""};
  }

  Script script;
  int launches = 0;  ///< Counts those that failed too.
  std::vector<std::shared_ptr<Record>> tasks;

 private:
  class FakeTask : public Task {
   public:
    FakeTask(Script script, std::shared_ptr<Record> record)
        : script_(std::move(script)), record_(std::move(record)) {}
    ~FakeTask() override { record_->alive = false; }

    std::optional<std::string> readToEnd(std::size_t limit) override {
      record_->readLimits.push_back(limit);
      if (script_.whileReading) script_.whileReading();
      if (script_.exceedsLimit) return std::nullopt;
      return script_.output;
    }

    bool isRunning() override {
      if (record_->terminations > 0 && !script_.ignoresTermination) return false;
      if (script_.seenRunning == 0) return false;
      if (script_.seenRunning != kRunsUntilTerminated) --script_.seenRunning;
      return true;
    }

    void terminate() override { ++record_->terminations; }

   private:
    Script script_;
    std::shared_ptr<Record> record_;
  };

  std::shared_ptr<CallLog> calls_;
};

}  // namespace tidewell

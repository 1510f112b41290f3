#include "Tidewell/NetworkSampler.h"

#include <charconv>
#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "Tidewell/CheckedArithmetic.h"
#include "Tidewell/Log.h"
#include "Tidewell/Utf8.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;

constexpr Seconds kToolPollInterval = 50ms;
constexpr Seconds kTimeAfterOutput = 8s;

/// A whole number in base 10 with an optional sign, and nothing else.
template <typename Integer>
std::optional<Integer> parseInteger(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return std::nullopt;
  }
  // An unsigned minus zero is a number too, which from_chars does not know.
  if (std::is_unsigned_v<Integer> && text.starts_with('-')) {
    text.remove_prefix(1);
    if (text.find_first_not_of('0') != std::string_view::npos) return std::nullopt;
  }
  Integer value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

/// Cuts the text before the next `separator` off `rest`, and the separator with it. Absent when
/// there is no separator.
std::optional<std::string_view> cutField(std::string_view& rest, char separator) {
  const std::size_t end = rest.find(separator);
  if (end == std::string_view::npos) return std::nullopt;
  const std::string_view field = rest.substr(0, end);
  rest.remove_prefix(end + 1);
  return field;
}

/// The identifier behind the last dot; process names may hold dots themselves.
std::optional<std::int32_t> parsePid(std::string_view processColumn) {
  const std::size_t dot = processColumn.rfind('.');
  if (dot == std::string_view::npos) return std::nullopt;
  return parseInteger<std::int32_t>(processColumn.substr(dot + 1));
}

void addLine(std::string_view line, NetworkTotals& totals) {
  std::string_view rest = line;
  const auto process = cutField(rest, ',');
  const auto in = process ? cutField(rest, ',') : std::nullopt;
  if (!in) return;
  const std::string_view out = rest.substr(0, rest.find(','));

  const auto pid = parsePid(*process);
  const auto bytesIn = parseInteger<std::uint64_t>(trimmed(*in));
  const auto bytesOut = parseInteger<std::uint64_t>(trimmed(out));
  if (!pid || !bytesIn || !bytesOut) return;
  std::uint64_t& total = totals[*pid];
  total = checkedAdd(total, checkedAdd(*bytesIn, *bytesOut));
}

}  // namespace

/// What the sampler and its run share. The run holds it only weakly until it begins, so that a
/// sampler that is gone keeps nothing alive.
struct NetworkSampler::Shared {
  Shared(TaskLauncher& taskLauncher, Clock& systemClock)
      : launcher(taskLauncher), clock(systemClock) {}

  TaskLauncher& launcher;
  Clock& clock;
  std::mutex lock;  ///< Guards the rest. Never held while the tool runs or its output is parsed.
  NetworkTotals latest;
  bool inFlight = false;
  bool abandoned = false;
  Task* running = nullptr;

  void run();
  std::optional<NetworkTotals> runNettop();
  std::optional<std::string> outputOf(Task& task);
  bool isAbandoned();
  bool publish(Task* task);
};

NetworkSampler::NetworkSampler(TaskLauncher& launcher, SerialQueues& queues, Clock& clock)
    : shared_(std::make_shared<Shared>(launcher, clock)),
      queue_(queues.make("com.staylit.nettop")) {}

NetworkSampler::~NetworkSampler() {
  {
    const std::lock_guard guard(shared_->lock);
    shared_->abandoned = true;
    // A tool that hangs must not keep the program from ending.
    if (shared_->running) shared_->running->terminate();
  }
  queue_.reset();
}

void NetworkSampler::refresh() {
  {
    const std::lock_guard guard(shared_->lock);
    if (std::exchange(shared_->inFlight, true)) return;
  }
  queue_->async([weak = std::weak_ptr(shared_)] {
    if (const auto shared = weak.lock()) shared->run();
  });
}

NetworkTotals NetworkSampler::currentTotals() const {
  const std::lock_guard guard(shared_->lock);
  return shared_->latest;
}

NetworkTotals NetworkSampler::parse(std::string_view text) {
  NetworkTotals totals;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    addLine(text.substr(0, end), totals);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return totals;
}

void NetworkSampler::Shared::run() {
  std::optional<NetworkTotals> totals = runNettop();
  const std::lock_guard guard(lock);
  if (totals) latest = std::move(*totals);
  inFlight = false;
}

std::optional<NetworkTotals> NetworkSampler::Shared::runNettop() {
  TaskLauncher::Launch launch =
      launcher.launch("/usr/bin/nettop", {"-P", "-L", "1", "-x", "-J", "bytes_in,bytes_out"});
  if (!launch.task) {
    Log::error("nettop failed to launch: " + launch.error);
    return std::nullopt;
  }
  if (!publish(launch.task.get())) return std::nullopt;
  const std::optional<std::string> output = outputOf(*launch.task);
  publish(nullptr);
  if (!output || !isValidUtf8(*output)) return std::nullopt;
  return parse(*output);
}

std::optional<std::string> NetworkSampler::Shared::outputOf(Task& task) {
  std::optional<std::string> output = task.readToEnd(kOutputLimit);
  if (!output) {
    task.terminate();
    return std::nullopt;
  }
  const Moment deadline =
      clock.now() + std::chrono::ceil<std::chrono::nanoseconds>(kTimeAfterOutput);
  while (task.isRunning() && clock.now() < deadline && !isAbandoned()) {
    clock.sleepFor(kToolPollInterval);
  }
  // What it has printed counts, even if it has to be stopped.
  if (task.isRunning()) task.terminate();
  return output;
}

bool NetworkSampler::Shared::isAbandoned() {
  const std::lock_guard guard(lock);
  return abandoned;
}

/// Makes the task that runs known to the sampler's end; false when that has come already.
bool NetworkSampler::Shared::publish(Task* task) {
  const std::lock_guard guard(lock);
  running = abandoned ? nullptr : task;
  return !abandoned;
}

}  // namespace tidewell

#include "Platform/MacOS/Network/NettopMeter.h"

#include <chrono>
#include <cstdint>
#include <type_traits>

#include "Tidewell/CheckedArithmetic.h"
#include "Tidewell/TextReading.h"
#include "Tidewell/Utf8.h"

namespace platform {
namespace {

using namespace std::chrono_literals;

constexpr tidewell::Seconds kToolPollInterval = 50ms;
constexpr tidewell::Seconds kTimeAfterOutput = 8s;

/// A whole number in base 10 with an optional sign, and nothing else.
template <typename Integer>
std::optional<Integer> parseInteger(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return std::nullopt;
  }
  // An unsigned minus zero is a number too, which `wholeNumber` does not know.
  if (std::is_unsigned_v<Integer> && text.starts_with('-')) {
    text.remove_prefix(1);
    if (text.find_first_not_of('0') != std::string_view::npos) return std::nullopt;
  }
  return tidewell::wholeNumber<Integer>(text);
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

void addLine(std::string_view line, tidewell::NetworkTotals& totals) {
  std::string_view rest = line;
  const auto process = cutField(rest, ',');
  const auto in = process ? cutField(rest, ',') : std::nullopt;
  if (!in) return;
  const std::string_view out = rest.substr(0, rest.find(','));

  const auto pid = parsePid(*process);
  const auto bytesIn = parseInteger<std::uint64_t>(tidewell::trimmed(*in));
  const auto bytesOut = parseInteger<std::uint64_t>(tidewell::trimmed(out));
  if (!pid || !bytesIn || !bytesOut) return;
  std::uint64_t& total = totals[*pid];
  total = tidewell::checkedAdd(total, tidewell::checkedAdd(*bytesIn, *bytesOut));
}

}  // namespace

tidewell::NetworkMeasurement NettopMeter::measure(tidewell::Cancellation& cancellation) {
  const tidewell::TaskLauncher::Launch launch =
      launcher_.launch("/usr/bin/nettop", {"-P", "-L", "1", "-x", "-J", "bytes_in,bytes_out"});
  if (!launch.task) return {std::nullopt, launch.error};
  if (!cancellation.onCancel([&launch] { launch.task->terminate(); })) return {};
  const std::optional<std::string> output = outputOf(*launch.task, cancellation);
  cancellation.onCancel(nullptr);
  if (!output || !tidewell::isValidUtf8(*output)) return {};
  return {parse(*output), ""};
}

std::optional<std::string> NettopMeter::outputOf(tidewell::Task& task,
                                                 const tidewell::Cancellation& cancellation) {
  std::optional<std::string> output = task.readToEnd(kOutputLimit);
  if (!output) {
    task.terminate();
    return std::nullopt;
  }
  const tidewell::Moment deadline =
      clock_.now() + std::chrono::ceil<std::chrono::nanoseconds>(kTimeAfterOutput);
  while (task.isRunning() && clock_.now() < deadline && !cancellation.isCancelled()) {
    clock_.sleepFor(kToolPollInterval);
  }
  // What it has printed counts, even if it has to be stopped.
  if (task.isRunning()) task.terminate();
  return output;
}

tidewell::NetworkTotals NettopMeter::parse(std::string_view text) {
  tidewell::NetworkTotals totals;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    addLine(text.substr(0, end), totals);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return totals;
}

}  // namespace platform

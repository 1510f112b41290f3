#include "Benchmarks/Detection/Options.h"

#include <charconv>

namespace {

std::optional<std::int64_t> whole(const std::string& text) {
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value < 0) return std::nullopt;
  return value;
}

bool apply(Options& options, const std::string& name, const std::string& value) {
  if (name == "--ignore") {
    options.ignored.push_back(value);
    return true;
  }
  const auto number = whole(value);
  if (!number) return false;
  const tidewell::Seconds seconds(static_cast<double>(*number));
  if (name == "--baseline") {
    options.baseline = seconds;
  } else if (name == "--work") {
    options.work = seconds;
  } else if (name == "--after") {
    options.after = seconds;
  } else if (name == "--grace") {
    options.graceSeconds = *number;
  } else {
    return false;
  }
  return true;
}

}  // namespace

std::optional<Options> Options::parse(const std::vector<std::string>& arguments) {
  Options options;
  auto argument = arguments.begin();
  while (argument != arguments.end() && *argument != "--") {
    const std::string& name = *argument++;
    if (argument == arguments.end() || !apply(options, name, *argument++)) return std::nullopt;
  }
  if (argument != arguments.end()) options.command.assign(argument + 1, arguments.end());
  if (options.command.empty()) return std::nullopt;
  return options;
}

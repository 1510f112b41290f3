#include "Staylit/Replay/ReplayRequest.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "Tidewell/TextReading.h"

namespace staylit {
namespace {

using Arguments = std::vector<std::string>;

bool has(const Arguments& arguments, std::string_view option) {
  return std::ranges::find(arguments, option) != arguments.end();
}

/// What follows an option, unless that is another option.
std::optional<std::string> valueAfter(const Arguments& arguments, std::size_t option) {
  if (option + 1 >= arguments.size() || arguments[option + 1].starts_with('-')) {
    return std::nullopt;
  }
  return arguments[option + 1];
}

std::optional<std::string> valueOf(const Arguments& arguments, std::string_view option) {
  const auto found = std::ranges::find(arguments, option);
  return valueAfter(arguments, static_cast<std::size_t>(found - arguments.begin()));
}

/// As the settings file would have it.
std::string asWritten(std::string_view text) {
  const std::size_t sign = text.find('=');
  return std::string(tidewell::trimmed(text.substr(0, sign))) + " = " +
         std::string(tidewell::trimmed(text.substr(sign + 1)));
}

void addSetting(ReplayRequest& request, const std::optional<std::string>& text) {
  if (!text) {
    request.error = "--set needs key=value";
    return;
  }
  auto setting = settingValue(*text, request.error);
  if (!setting) return;
  if (std::ranges::find(request.settings, setting->key, &SettingValue::key) !=
      request.settings.end()) {
    request.error = setting->key + " is set twice";
    return;
  }
  request.settingTexts.push_back(asWritten(*text));
  request.settings.push_back(std::move(*setting));
}

}  // namespace

std::optional<ReplayRequest> ReplayRequest::in(const Arguments& arguments) {
  if (!has(arguments, "--replay") || has(arguments, "--diagnose")) return std::nullopt;
  ReplayRequest request;
  request.file = valueOf(arguments, "--replay");
  if (has(arguments, "--json")) request.form = Form::json;
  for (std::size_t place = 0; place < arguments.size() && request.error.empty(); ++place) {
    if (arguments[place] == "--set") addSetting(request, valueAfter(arguments, place));
  }
  if (request.file && has(arguments, "--ring")) request.error = "--ring needs no file";
  return request;
}

std::optional<RecordRequest> RecordRequest::in(const Arguments& arguments) {
  if (!has(arguments, "--record") || has(arguments, "--diagnose")) return std::nullopt;
  RecordRequest request;
  request.file = valueOf(arguments, "--record").value_or("");
  request.hasMadeUpNames = has(arguments, "--anonymous");
  request.isOfRing = has(arguments, "--ring");
  if (request.file.empty()) request.error = "--record needs a file";
  return request;
}

}  // namespace staylit

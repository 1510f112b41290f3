#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Staylit/Replay/SettingValue.h"

namespace staylit {

/// How `--replay` is to answer.
struct ReplayRequest {
  enum class Form { text, json };

  std::optional<std::string> file;  ///< Absent for the ring.
  std::vector<SettingValue> settings;
  std::vector<std::string> settingTexts;  ///< The same, as somebody wrote them: "key = value".
  Form form = Form::text;
  std::string error;  ///< What is wrong with the arguments; empty when nothing is.

  /// Absent when the arguments do not ask for a replay. They are all arguments of the process.
  static std::optional<ReplayRequest> in(const std::vector<std::string>& arguments);
};

/// What `--record` is to do.
struct RecordRequest {
  std::string file;
  bool hasMadeUpNames = false;
  bool isOfRing = false;  ///< The file gets what the ring has, and nothing is recorded.
  std::string error;      ///< What is wrong with the arguments; empty when nothing is.

  /// Absent when the arguments do not ask for a recording. They are all arguments of the process.
  static std::optional<RecordRequest> in(const std::vector<std::string>& arguments);
};

}  // namespace staylit

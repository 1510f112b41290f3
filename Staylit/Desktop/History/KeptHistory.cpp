#include "Staylit/Desktop/History/KeptHistory.h"

#include <cstdlib>
#include <string_view>
#include <utility>

#include "Platform/Linux/Files/HistoryFolder.h"
#include "Platform/Linux/Settings/TomlDefaults.h"
#include "Platform/Linux/Time/SystemClock.h"
#include "Platform/Posix/Files/LineFiles.h"
#include "Staylit/History/HistoryReader.h"
#include "Staylit/Prefs.h"

namespace staylit {

HistoryPrinter::Source readHistory() {
  const auto folder = platform::historyFolder();
  auto content = platform::LineFiles::read(folder, platform::describeError);
  platform::TomlDefaults defaults(platform::TomlDefaults::defaultPath());
  defaults.registerDefaults(registeredHistorySettings());
  const auto now = platform::SystemClock().wallTime();
  return {historyIn({content.text, content.lastWritten, content.isInUse}, now),
          folder.empty() ? "the home folder, which this user has not" : folder.string(),
          std::move(content.error), defaults.boolean(keys::historyEnabled)};
}

bool mayBeColoured(tidewell::Console& console) {
  const auto value = [](const char* variable) {
    const char* text = std::getenv(variable);
    return std::string_view(text ? text : "");
  };
  return console.outputIsTerminal() && value("NO_COLOR").empty() && value("TERM") != "dumb";
}

}  // namespace staylit

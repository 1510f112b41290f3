#include "Staylit/AppKit/History/KeptHistory.h"

#include <cstdlib>
#include <string_view>
#include <utility>

#include "Platform/MacOS/Settings/HistoryFolder.h"
#include "Platform/MacOS/Text/LocalizedDescription.h"
#include "Platform/Posix/Files/LineFiles.h"
#include "Staylit/History/HistoryReader.h"
#include "Staylit/Prefs.h"

namespace staylit {

int tellHistory(const HistoryRequest& request, tidewell::Ports& ports) {
  const auto folder = platform::historyFolder();
  auto content = platform::LineFiles::read(folder, platform::localizedDescription);
  ports.defaults->registerDefaults(registeredHistorySettings());
  const HistoryPrinter::Source source{
      historyIn({content.text, content.lastWritten, content.isInUse}, ports.clock->wallTime()),
      folder.string(), std::move(content.error), ports.defaults->boolean(keys::historyEnabled)};
  return HistoryPrinter::print(source, request, *ports.console, terminalStyle(ports));
}

HistoryTexts::Style terminalStyle(tidewell::Ports& ports) {
  const char* noColour = std::getenv("NO_COLOR");
  const bool isColoured =
      ports.console->outputIsTerminal() && std::string_view(noColour ? noColour : "").empty();
  // A Mac's terminal shows all characters.
  return {true, isColoured};
}

}  // namespace staylit

#include "Staylit/Desktop/History/PageWriter.h"

#include <string>
#include <string_view>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Platform/Posix/Files/OwnFile.h"
#include "Staylit/Desktop/CommandLine.h"
#include "Staylit/Desktop/History/KeptHistory.h"
#include "Staylit/Desktop/History/PageOpener.h"

namespace staylit {
namespace {

constexpr int kDone = 0;
constexpr int kTrouble = 2;

int failed(tidewell::Console& console, const std::string& why) {
  console.writeError("staylit: " + why + "\n");
  return kTrouble;
}

/// Where the page goes, if it does not go to standard output.
PageOpener::Place placeOf(const PageRequest& request) {
  if (!request.file.empty()) return {request.file, ""};
  return PageOpener::place();
}

/// Whoever clicked looks at no terminal, and is told by a notification.
int notShown(PageOpener& opener, tidewell::Console& console, const std::string& why) {
  if (!console.errorIsTerminal()) opener.notify(why);
  return failed(console, why);
}

int show(const PageRequest& request, std::string_view page, tidewell::Console& console) {
  platform::EventLoop loop;
  platform::Bus sessionBus(loop, platform::Bus::Kind::session);
  PageOpener opener(loop, sessionBus);
  const PageOpener::Place place = placeOf(request);
  if (!place.error.empty()) return notShown(opener, console, place.error);
  const std::string file = place.file.string();
  if (const std::string why = platform::writeOwnFile(place.file, page); !why.empty()) {
    return notShown(opener, console, file + " cannot be written: " + why);
  }
  const std::string why = opener.open(place.file);
  return why.empty() ? kDone : notShown(opener, console, why + "; the page is " + file);
}

}  // namespace

int writeHistoryPage(const PageRequest& request, tidewell::Console& console) {
  if (request.opens && request.isForStandardOutput()) {
    return failed(console, "--open needs a page in a file");
  }
  const HistoryPrinter::Source source = readHistory();
  if (!source.error.empty()) {
    return failed(console, "the history in " + source.place + " cannot be read: " + source.error);
  }
  const PageRequest::Page page = request.make(source.history, CommandLine::version());
  if (!page.error.empty()) return failed(console, page.error);
  if (source.history.events.empty() && !source.isSwitchedOn) {
    console.writeError("staylit: no history is kept: it is switched off in the settings file\n");
  }
  if (request.opens) return show(request, page.text, console);
  if (request.isForStandardOutput()) {
    // The page ends with a newline, as a line does.
    console.printLine(std::string_view(page.text).substr(0, page.text.size() - 1));
    return kDone;
  }
  const std::string why = platform::writeOwnFile(request.file, page.text);
  return why.empty() ? kDone : failed(console, request.file + " cannot be written: " + why);
}

}  // namespace staylit

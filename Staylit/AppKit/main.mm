#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

#include "Platform/MakePorts.h"
#include "Platform/Posix/StandardStreams.h"
#include "Staylit/AppKit/AppKitApplication.h"
#include "Staylit/AppKit/AppKitUserInterface.h"
#include "Staylit/AppKit/History/KeptHistory.h"
#include "Staylit/AppKit/Replay/Recordings.h"
#include "Staylit/AppKit/Status/StatusQuestion.h"
#include "Staylit/AppMain.h"
#include "Staylit/DoctorReport.h"
#include "Staylit/HoldsPrinter.h"

int main(int argc, char** argv) {
  platform::prepareStandardStreams();
  @autoreleasepool {
    const std::vector<std::string> arguments(argv, argv + argc);
    if (staylit::HoldsRequest::in(arguments)) {
      std::cerr << "staylit: --holds is for Linux; here, pmset -g assertions lists what is held\n";
      return staylit::HoldsPrinter::trouble;
    }
    if (staylit::DoctorReport::isAskedFor(arguments)) {
      std::cerr << "staylit: --doctor is for Linux; here, --diagnose says what would hold\n";
      return staylit::DoctorReport::trouble;
    }
    for (const char* command : {"--pause", "--resume", "--toggle-pause", "--quit"}) {
      if (std::ranges::find(arguments, command) == arguments.end()) continue;
      if (std::ranges::find(arguments, "--diagnose") != arguments.end()) break;
      std::cerr << "staylit: " << command << " is for Linux; here, the menu does it\n";
      return staylit::StatusPrinter::trouble;
    }
    const auto ports = platform::makePorts();
    if (const auto request = staylit::StatusRequest::in(arguments)) {
      return staylit::tellStatus(*request, *ports->console, *ports->clock);
    }
    if (const auto request = staylit::HistoryRequest::in(arguments)) {
      return staylit::tellHistory(*request, *ports);
    }
    if (const auto request = staylit::ReplayRequest::in(arguments)) {
      return staylit::Recordings(*ports).replay(*request);
    }
    if (const auto request = staylit::RecordRequest::in(arguments)) {
      return staylit::Recordings(*ports).record(*request);
    }
    staylit::AppKitApplication application;
    staylit::AppKitUserInterface userInterface;
    return staylit::AppMain(*ports, application, userInterface).run(arguments);
  }
}

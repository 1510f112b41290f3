#include <langinfo.h>

#include <clocale>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/LinuxPorts.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Platform/Linux/Text/GettextTranslator.h"
#include "Platform/Linux/Time/SystemClock.h"
#include "Platform/Posix/PlainConsole.h"
#include "Platform/Posix/PosixConsole.h"
#include "Platform/Posix/StandardStreams.h"
#include "Staylit/AppMain.h"
#include "Staylit/Desktop/CommandLine.h"
#include "Staylit/Desktop/Control/RunningStaylit.h"
#include "Staylit/Desktop/DesktopApplication.h"
#include "Staylit/Desktop/DesktopUserInterface.h"
#include "Staylit/Desktop/Display/DisplayTrial.h"
#include "Staylit/Desktop/Doctor/Examination.h"
#include "Staylit/Desktop/History/KeptHistory.h"
#include "Staylit/Desktop/History/PageWriter.h"
#include "Staylit/Desktop/Holds/HoldsReader.h"
#include "Staylit/Desktop/Machine/MachineApplication.h"
#include "Staylit/Desktop/Machine/MachineUserInterface.h"
#include "Staylit/Desktop/Replay/Recordings.h"
#include "Staylit/Desktop/Status/StatusQuery.h"
#include "Staylit/DoctorReport.h"
#include "Staylit/History/HistoryPrinter.h"
#include "Staylit/HoldsPrinter.h"
#include "Tidewell/Words.h"

namespace {

/// Whoever asked has not got the answer when it could not be written, whatever it says.
int exitStatus(platform::PosixConsole& console, int status) {
  if (console.outputError() == 0) return status;
  const std::string why = std::generic_category().message(console.outputError());
  console.writeError("staylit: the answer cannot be written: " + why + "\n");
  constexpr int kTrouble = 2;
  return kTrouble;
}

/// What the terminal can show, by the locale of the environment.
staylit::DoctorReport::Signs signs() {
  using Signs = staylit::DoctorReport::Signs;
  const bool isKnown = std::setlocale(LC_CTYPE, "") != nullptr;
  const bool isUnicode = isKnown && std::string_view(::nl_langinfo(CODESET)) == "UTF-8";
  return isUnicode ? Signs::drawn : Signs::plain;
}

/// The console for people to read. Programs get JSON, which has one encoding.
tidewell::Console& readable(platform::PosixConsole& console, platform::PlainConsole& plain) {
  return signs() == staylit::DoctorReport::Signs::plain ? static_cast<tidewell::Console&>(plain)
                                                        : console;
}

/// How a history is drawn on this console.
staylit::HistoryTexts::Style drawing(tidewell::Console& console) {
  return {signs() == staylit::DoctorReport::Signs::drawn, staylit::mayBeColoured(console)};
}

int tellStatus(const staylit::StatusRequest& request) {
  platform::EventLoop loop;
  platform::Buses buses(loop);
  platform::PosixConsole console;
  platform::PlainConsole plain(console);
  platform::SystemClock clock;
  const bool isForPeople = request.form == staylit::StatusRequest::Form::text;
  staylit::StatusPrinter printer(request, isForPeople ? readable(console, plain) : console, clock);
  const int status = staylit::StatusQuery(loop, buses, printer, request).run();
  return exitStatus(console, status);
}

int tellHolds(const staylit::HoldsRequest& request) {
  platform::EventLoop loop;
  platform::Buses buses(loop);
  platform::PosixConsole console;
  platform::PlainConsole plain(console);
  platform::SystemClock clock;
  const auto report = staylit::HoldsReader(buses.system, buses.session, clock).read();
  const bool isForPeople = request.form == staylit::HoldsRequest::Form::text;
  const int status = staylit::HoldsPrinter::print(
      report, request, isForPeople ? readable(console, plain) : console, clock.wallTime());
  return exitStatus(console, status);
}

int makePage(const staylit::PageRequest& request) {
  platform::PosixConsole console;
  return exitStatus(console, staylit::writeHistoryPage(request, console));
}

int tellHistory(const staylit::HistoryRequest& request) {
  platform::PosixConsole console;
  platform::PlainConsole plain(console);
  const auto source = staylit::readHistory();
  const bool isForPeople = request.form == staylit::HistoryRequest::Form::text;
  const int status = staylit::HistoryPrinter::print(
      source, request, isForPeople ? readable(console, plain) : console, drawing(console));
  return exitStatus(console, status);
}

int examine() {
  platform::EventLoop loop;
  platform::Buses buses(loop);
  platform::PosixConsole console;
  platform::SystemClock clock;
  const auto facts = staylit::Examination(loop, buses, clock).run();
  const auto report = staylit::DoctorReport::of(facts);
  for (const std::string& line : report.lines(signs()))
    console.printLine(line);
  return exitStatus(console, report.exitStatus());
}

int replay(const staylit::ReplayRequest& request) {
  platform::PosixConsole console;
  platform::PlainConsole plain(console);
  const bool isForPeople = request.form == staylit::ReplayRequest::Form::text;
  staylit::Recordings recordings(isForPeople ? readable(console, plain) : console);
  return exitStatus(console, recordings.replay(request, drawing(console)));
}

int record(const staylit::RecordRequest& request) {
  platform::PosixConsole console;
  return exitStatus(console, staylit::Recordings(console).record(request));
}

int command(const staylit::ControlRequest& request) {
  platform::EventLoop loop;
  platform::Buses buses(loop);
  platform::PosixConsole console;
  platform::SystemClock clock;
  const int status = staylit::RunningStaylit(loop, buses.session, console, clock).obey(request);
  return exitStatus(console, status);
}

int serveMachine(const std::vector<std::string>& arguments) {
  const auto loop = std::make_shared<platform::EventLoop>();
  const auto buses = std::make_shared<platform::Buses>(*loop, platform::Buses::Serving::machine);
  const std::unique_ptr<tidewell::Ports> ports =
      platform::makeLinuxPorts(loop, buses, staylit::MachineApplication::settings());
  staylit::MachineUserInterface userInterface(*loop, buses->system);
  staylit::MachineApplication application(*loop, buses->system);
  return staylit::AppMain(*ports, application, userInterface).run(arguments);
}

int serveSession(const staylit::CommandLine& commandLine,
                 const std::vector<std::string>& arguments) {
  const auto loop = std::make_shared<platform::EventLoop>();
  const auto buses = std::make_shared<platform::Buses>(*loop);
  const std::unique_ptr<tidewell::Ports> ports = platform::makeLinuxPorts(loop, buses);
  staylit::DesktopUserInterface userInterface(*loop, buses->session);
  staylit::DesktopApplication application(*loop, buses->session, userInterface, *ports->console,
                                          commandLine.request());
  const int status = staylit::AppMain(*ports, application, userInterface).run(arguments);
  return status != 0 ? status : application.exitStatus();
}

}  // namespace

int main(int argc, char** argv) {
  platform::prepareStandardStreams();
  const std::vector<std::string> arguments(argv, argv + argc);
  if (arguments.size() == 2 && arguments[1] == staylit::DisplayTrial::kOption) {
    return staylit::DisplayTrial::runInOwnProcess();
  }
  const staylit::CommandLine commandLine(arguments);
  if (const auto complaint = commandLine.complaint()) {
    std::cerr << *complaint;
    constexpr int kMisunderstood = 2;
    return kMisunderstood;
  }
  if (const auto information = commandLine.information()) {
    std::cout << *information;
    return 0;
  }
  // A service of the whole machine shows nothing; what would be shown goes to its log.
  if (!staylit::MachineApplication::isAskedFor(arguments)) {
    tidewell::Words::setTranslator(platform::GettextTranslator::ofThisProgram());
  }
  if (const auto request = staylit::StatusRequest::in(arguments)) return tellStatus(*request);
  if (const auto request = staylit::HoldsRequest::in(arguments)) return tellHolds(*request);
  if (const auto request = staylit::PageRequest::in(arguments)) return makePage(*request);
  if (const auto request = staylit::HistoryRequest::in(arguments)) return tellHistory(*request);
  if (staylit::DoctorReport::isAskedFor(arguments)) return examine();
  if (staylit::MachineApplication::isAskedFor(arguments)) return serveMachine(arguments);
  if (const auto request = staylit::ReplayRequest::in(arguments)) return replay(*request);
  if (const auto request = staylit::RecordRequest::in(arguments)) return record(*request);
  if (const auto request = commandLine.control()) return command(*request);
  std::cerr << commandLine.warning().value_or("");
  return serveSession(commandLine, arguments);
}

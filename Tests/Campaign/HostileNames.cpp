// Leads hostile names through every sink.
//
// The names enter by the real adapters. The engine is the real one, and so is all that shows the
// names. The desktop is a host on a private bus.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Linux/Applications/DesktopFiles.h"
#include "Platform/Linux/Applications/UnitName.h"
#include "Platform/Linux/Processes/ProgramPath.h"
#include "Platform/Linux/Settings/TomlDefaults.h"
#include "Platform/Linux/Sleep/InhibitorList.h"
#include "Staylit/AppsView.h"
#include "Staylit/Desktop/DesktopUserInterface.h"
#include "Staylit/Diagnostics.h"
#include "Staylit/MenuBarController.h"
#include "Staylit/StaylitEngine.h"
#include "Staylit/TerminalReporter.h"
#include "Tests/Campaign/Campaigns.h"
#include "Tests/Campaign/PrivateBuses.h"
#include "Tests/Campaign/RandomText.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Platform/Support/BusService.h"
#include "Tests/Platform/Support/FakeLogind.h"
#include "Tests/Platform/Support/TemporaryFolder.h"
#include "Tests/Shell/Support/Host.h"

namespace staylit::campaign {
namespace {

using namespace std::chrono_literals;
using platform::testing::FakeLogind;
using platform::testing::TemporaryFolder;

constexpr std::size_t kNamesPerRound = 50;

constexpr const char* kAgent = "org.kde.Solid.PowerManagement.PolicyAgent";

/// Lists one hostile holder, and another one each time.
void answerAgent(sd_bus_message* call) {
  static Random random(17);
  const std::string who = hostileText(random);
  const std::string why = hostileText(random);
  sd_bus_reply_method_return(call, "a(ss)", 1, who.c_str(), why.c_str());
}

/// Leads fifty hostile names from the adapters to the sinks.
class Round {
 public:
  Round(PrivateBuses& buses, FakeLogind& logind, Random& random)
      : buses_(buses), logind_(logind), random_(random) {}

  std::vector<std::string> run() {
    fakes_.defaults.stored["sustainSeconds"] = std::int64_t{1};
    for (std::size_t number = 0; number < kNamesPerRound; ++number)
      enter(number);
    addDesktopFiles();
    addHolders();
    show();
    return std::move(findings_);
  }

 private:
  /// Adds a process whose name enters in one of four ways.
  void enter(std::size_t number) {
    const auto pid = static_cast<std::int32_t>(1000 + number);
    const std::string raw = hostileName(random_);
    switch (number % 4) {
      case 0:
        return work(pid, platform::programPath("/opt/" + raw, "x", fakes_.text));
      case 1:
        return work(pid, platform::programPath("/opt/tool (deleted)", raw, fakes_.text));
      case 2:
        return work(pid, platform::scriptPath("/usr/bin/bash", raw));
      default:
        return enterByUnit(pid, raw);
    }
  }

  void enterByUnit(std::int32_t pid, const std::string& raw) {
    const auto unit =
        platform::UnitName::fromControlGroup("0::/user.slice/app-" + raw + "-77.scope\n");
    work(pid, "/opt/unit" + std::to_string(pid));
    for (const std::string& id : unit.applicationIds())
      fakes_.applications.add(pid, id, id);
  }

  void work(std::int32_t pid, const std::string& path) {
    fakes_.processes.add(pid, path);
    workers_.push_back(pid);
  }

  /// Adds applications whose files have hostile names and hostile contents.
  void addDesktopFiles() {
    const std::filesystem::path folder = folder_.path() / "applications";
    std::filesystem::create_directories(folder);
    std::vector<std::string> programs;
    for (int number = 0; number < 8; ++number) {
      const std::string program = (folder_.path() / ("tool" + std::to_string(number))).string();
      std::ofstream(program) << "";
      std::filesystem::permissions(program, std::filesystem::perms::owner_all);
      std::ofstream(folder / (std::to_string(number) + hostileName(random_) + ".desktop"))
          << "[Desktop Entry]\nType=Application\nName=" << hostileName(random_)
          << "\nExec=" << program << "\n";
      programs.push_back(program);
    }
    platform::DesktopFiles files({{folder}, {}, ""});
    for (const std::string& program : programs) {
      const auto application = files.findByProgram(program);
      if (!application) continue;
      const auto pid = static_cast<std::int32_t>(2000 + workers_.size());
      work(pid, program);
      fakes_.applications.add(pid, application->id, application->localizedName);
    }
  }

  /// Adds the holders that the services list, whose names and reasons are hostile.
  void addHolders() {
    logind_.list({{"idle", hostileText(random_), hostileText(random_), "block", 1000, 3000}});
    const auto named = std::make_shared<platform::NamedHolders>();
    platform::InhibitorList list(buses_.systemBus, buses_.sessionBus, named);
    const auto holders = list.assertionsByProcess();
    if (!holders) return find("the services' lists", "no answer");
    for (const auto& [pid, assertions] : *holders) {
      for (const auto& assertion : assertions)
        check("a holder's reason", assertion.reason);
      const auto number = static_cast<std::int32_t>(pid);
      fakes_.assertions.hold(number, "PreventUserIdleSystemSleep");
      fakes_.applications.add(number, named->applicationId(number), std::nullopt);
    }
  }

  void show() {
    StaylitEngine engine(fakes_.ports);
    const TerminalReporter reporter(engine, fakes_.console, fakes_.clock);
    DesktopUserInterface userInterface(buses_.loop, buses_.sessionBus);
    MenuBarController controller(engine, userInterface, fakes_.ports);
    for (int tick = 0; tick < 4; ++tick)
      tickAll(engine);
    platform::testing::runBriefly(buses_.loop);
    check("the terminal", fakes_.console.output, true);
    for (const std::string& name : fakes_.power.liveNames())
      check("the bus (a hold's reason)", name);
    showOnBus();
    showInWindows(engine);
    writeSettings(engine);
    report();
    for (const auto& record : fakes_.log.records())
      check("the journal", record.message);
    if (engine.busyApps().get().empty()) find("the engine", "nothing was busy");
  }

  void tickAll(StaylitEngine& engine) {
    for (const std::int32_t pid : workers_)
      fakes_.processes.at(pid).usage.userTime += 1'000'000'000;
    fakes_.clock.advance(2s);
    engine.tick();
    fakes_.mainLoop.runPosted();
  }

  void showOnBus() {
    const char* name = nullptr;
    if (sd_bus_get_unique_name(buses_.sessionBus.handle(), &name) < 0) return;
    testing::Host host(buses_.loop, name);
    const std::string toolTip = host.itemProperty("ToolTip");
    check("the tool tip", toolTip);
    if (toolTip.find_first_of("<>&") != std::string::npos) find("the tool tip", "markup");
    const std::string menu = host.layout();
    check("the menu", menu);
    if (!toolTip.starts_with("(") || menu.find("Quit") == std::string::npos) {
      find("the bus", "no answer: " + toolTip);
    }
  }

  void showInWindows(StaylitEngine& engine) {
    const AppsView view(engine, fakes_.ports);
    for (const AppsView::Section& section : view.sections()) {
      for (const AppsView::Entry& entry : section.entries) {
        check("the windows", entry.name);
        check("the windows", entry.detail.value_or(""));
      }
    }
  }

  void writeSettings(StaylitEngine& engine) {
    std::vector<std::string> ids;
    for (const tidewell::BusyApp& app : engine.busyApps().get())
      ids.push_back(app.id);
    const std::filesystem::path file = folder_.path() / "settings.toml";
    {
      platform::TomlDefaults defaults(file);
      defaults.setStringList("ignoredApps", ids);
    }
    std::stringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    check("the settings", text.str(), true);
    if (platform::TomlDefaults(file).stringList("ignoredApps") != ids) {
      find("the settings", "another list than was written");
    }
  }

  void report() {
    fakes_.console.output.clear();
    fakes_.clock.whileSleeping = [this] {
      for (const std::int32_t pid : workers_)
        fakes_.processes.at(pid).usage.userTime += 1'000'000'000;
    };
    Diagnostics::run(fakes_.ports);
    check("the report", fakes_.console.output, true);
  }

  void check(const std::string& sink, std::string_view text, bool lines = false) {
    if (const std::string harm = harmIn(text, lines); !harm.empty()) find(sink, harm);
  }
  void find(const std::string& sink, const std::string& what) {
    const std::string finding = "In " + sink + " there was " + what + ".";
    if (std::ranges::find(findings_, finding) == findings_.end()) findings_.push_back(finding);
  }

  PrivateBuses& buses_;
  FakeLogind& logind_;
  Random& random_;
  TemporaryFolder folder_;
  tidewell::FakePorts fakes_;
  std::vector<std::int32_t> workers_;
  std::vector<std::string> findings_;
};

}  // namespace

Outcome hostileNames(Effort effort) {
  Outcome outcome;
  Random random(20261122);
  PrivateBuses buses;
  buses.systemBus.connect();
  buses.sessionBus.connect();
  FakeLogind logind(buses.systemDaemon.address());
  const platform::testing::BusService agent(buses.sessionDaemon.address(), {kAgent}, answerAgent);
  const std::int64_t wanted = effort.quick ? 500 : 10'000;
  while (outcome.runs < wanted) {
    for (std::string& finding : Round(buses, logind, random).run()) {
      if (std::ranges::find(outcome.findings, finding) == outcome.findings.end()) {
        outcome.findings.push_back(std::move(finding));
      }
    }
    outcome.runs += static_cast<std::int64_t>(kNamesPerRound);
  }
  outcome.measured = "8 sinks";
  return outcome;
}

}  // namespace staylit::campaign

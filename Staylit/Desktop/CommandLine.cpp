#include "Staylit/Desktop/CommandLine.h"

#include <algorithm>

#include "Staylit/Desktop/ArgumentCheck.h"
#include "Staylit/PauseTexts.h"

namespace staylit {
namespace {

constexpr const char* kHelp =
    "Usage: staylit [OPTION]\n"
    "\n"
    "Keeps the computer awake while real work is going on. Without an option it starts;\n"
    "where it runs already, that one shows its Choose Apps window.\n"
    "\n"
    "  --diagnose          watch for a quarter of a minute, report what works, and end\n"
    "  --status            say what the one that runs does, and why\n"
    "    --follow          and then each change, until it is interrupted\n"
    "  --holds             list all that keeps the computer awake, and say whether it would sleep\n"
    "    --json            this, the status, the history or a replay, for programs\n"
    "  --history           say what happened today: what was held, and why\n"
    "    --since WHEN      from then on: 2026-11-21, \"2026-11-21 14:30\", yesterday, 7d, 12h ...\n"
    "    --until WHEN      until then\n"
    "    --html FILE       write it as a web page, of a week unless --since says otherwise\n"
    "    --open            show that page in the browser\n"
    "  --doctor            check this machine, and say what to do\n"
    "  --record FILE       record what it sees and decides, holding nothing, until it is "
    "interrupted\n"
    "    --anonymous       with made-up names for the programs that nobody else needs to know\n"
    "    --ring            no recording: what the running one has kept of the last day\n"
    "  --replay [FILE]     say what would have been held, by a recording, or else by the last day\n"
    "    --set KEY=VALUE   with another setting, for example cpuThresholdPercent=25\n"
    "  --pause [DURATION]  pause the one that runs, for example for 45m, 2h or 1h30m\n"
    "  --resume            end its pause\n"
    "  --toggle-pause      pause, or resume\n"
    "  --choose-apps       show the window in which applications are chosen\n"
    "  --settings          show the settings\n"
    "  --background        start, or do nothing where it runs already\n"
    "  --quit              end the Staylit that runs\n"
    "  --system            serve the whole machine, as its system unit does\n"
    "  --help, -h          print this\n"
    "  --version           print the version\n"
    "\n"
    "It runs until it is ended, in the foreground of the terminal that starts it.\n"
    "staylit(1) says more.\n";

constexpr const char* kVersion = "Staylit " STAYLIT_VERSION;
}  // namespace

std::string CommandLine::version() {
  return kVersion;
}

bool CommandLine::has(const char* option) const {
  return std::ranges::find(arguments_, option) != arguments_.end();
}

std::optional<std::string> CommandLine::information() const {
  if (has("--diagnose")) return std::nullopt;
  if (has("--help") || has("-h")) return kHelp;
  if (has("--version")) return version() + "\n";
  return std::nullopt;
}

std::optional<std::string> CommandLine::complaint() const {
  if (has("--diagnose")) return std::nullopt;
  return complaintAbout(arguments_);
}

std::optional<std::string> CommandLine::warning() const {
  if (has("--diagnose")) return std::nullopt;
  const auto almost = std::ranges::find_if(arguments_, isAlmostDiagnose);
  if (almost == arguments_.end()) return std::nullopt;
  return "staylit: '" + *almost + "' is not --diagnose, so Staylit starts\n";
}

std::string CommandLine::lengthOfPause() const {
  const auto pause = std::ranges::find(arguments_, "--pause");
  if (pause == arguments_.end() || pause + 1 == arguments_.end()) return "";
  return *(pause + 1);
}

std::optional<ControlRequest> CommandLine::control() const {
  using Kind = ControlRequest::Kind;
  if (has("--diagnose")) return std::nullopt;
  if (has("--pause")) return ControlRequest{Kind::pause, pauseLengthIn(lengthOfPause())};
  if (has("--resume")) return ControlRequest{Kind::resume, {}};
  if (has("--toggle-pause")) return ControlRequest{Kind::togglePause, {}};
  if (has("--quit")) return ControlRequest{Kind::quit, {}};
  return std::nullopt;
}

ApplicationService::Request CommandLine::request() const {
  for (const char* action : {"choose-apps", "settings"}) {
    if (has((std::string("--") + action).c_str())) return {action, false};
  }
  return {"", has("--background")};
}

}  // namespace staylit

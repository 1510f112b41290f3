#include "Staylit/Desktop/CommandLine.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <string_view>

#include "Staylit/NearestWord.h"
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
constexpr const char* kSeeHelp = "staylit: staylit --help lists all options";

enum class Role {
  command,        ///< What the program is to do; one at a time.
  modifier,       ///< Says how.
  withLength,     ///< A command that a length of time may follow.
  withWord,       ///< A command that a word of any kind may follow.
  modifierOfWord  ///< Says how, by the word that follows.
};

struct Option {
  std::string_view name;
  Role role;
};

constexpr std::array kOptions = {
    Option{"--diagnose", Role::command},     Option{"--status", Role::command},
    Option{"--follow", Role::modifier},      Option{"--holds", Role::command},
    Option{"--json", Role::modifier},        Option{"--doctor", Role::command},
    Option{"--pause", Role::withLength},     Option{"--resume", Role::command},
    Option{"--toggle-pause", Role::command}, Option{"--choose-apps", Role::command},
    Option{"--settings", Role::command},     Option{"--background", Role::modifier},
    Option{"--quit", Role::command},         Option{"--help", Role::command},
    Option{"--system", Role::modifier},      Option{"--version", Role::command},
    Option{"--record", Role::withWord},      Option{"--anonymous", Role::modifier},
    Option{"--ring", Role::modifier},        Option{"--replay", Role::withWord},
    Option{"--set", Role::modifierOfWord},   Option{"--history", Role::command},
    Option{"--since", Role::modifierOfWord}, Option{"--until", Role::modifierOfWord},
    Option{"--html", Role::modifierOfWord},  Option{"--open", Role::modifier}};

std::string withoutDashes(std::string_view argument) {
  return std::string(argument.substr(std::min(argument.find_first_not_of('-'), argument.size())));
}

std::string inSmallLetters(std::string text) {
  std::ranges::transform(text, text.begin(), [](unsigned char letter) {
    return static_cast<char>(std::tolower(letter));
  });
  return text;
}

const Option* optionNamed(std::string_view name) {
  const auto* found = std::ranges::find(kOptions, name == "-h" ? "--help" : name, &Option::name);
  return found == kOptions.end() ? nullptr : found;
}

/// The option that was probably meant, also by a bare word; empty when none is near.
std::string nearestOption(std::string_view argument) {
  std::array<std::string_view, kOptions.size()> names;
  std::ranges::transform(kOptions, names.begin(), [](const Option& option) {
    return option.name.substr(option.name.find_first_not_of('-'));
  });
  const std::string written = inSmallLetters(withoutDashes(argument.substr(0, argument.find('='))));
  const auto nearest = nearestWord(written, names);
  return nearest ? "--" + *nearest : "";
}

/// Whether the argument is one that must not ask for the report, and yet is almost "--diagnose": it
/// goes on after that, has one dash, or other letters are capital.
bool isAlmostDiagnose(std::string_view argument) {
  return argument.starts_with("-") &&
         inSmallLetters(withoutDashes(argument)).starts_with("diagnose");
}

std::string unknown(std::string_view argument) {
  const std::string nearest = nearestOption(argument);
  const std::string hint = nearest.empty() ? "" : "; " + nearest + " may be meant";
  return "staylit: there is no option '" + std::string(argument) + "'" + hint + "\n" + kSeeHelp +
         "\n";
}

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
  std::string_view command;
  bool mayHaveLength = false;
  bool mayHaveWord = false;
  // The first argument is the program's name.
  for (std::size_t i = 1; i < arguments_.size(); ++i) {
    const std::string& argument = arguments_[i];
    const bool isWord = mayHaveWord && !argument.starts_with("--");
    mayHaveWord = false;
    if (isWord) continue;
    const bool isLength = mayHaveLength && !argument.starts_with("-");
    mayHaveLength = false;
    if (isLength && pauseLengthIn(argument)) continue;
    if (isLength) {
      return "staylit: '" + argument + "' is no length of time; 45m, 2h or 1h30m would be one\n";
    }
    const Option* option = optionNamed(argument);
    if (!option && isAlmostDiagnose(argument)) continue;
    if (!option) return unknown(argument);
    mayHaveWord = option->role == Role::withWord || option->role == Role::modifierOfWord;
    if (option->role == Role::modifier || option->role == Role::modifierOfWord) continue;
    if (!command.empty() && command != option->name) {
      return "staylit: " + std::string(command) + " and " + argument + " cannot be done at once\n" +
             kSeeHelp + "\n";
    }
    command = option->name;
    mayHaveLength = option->role == Role::withLength;
  }
  if (has("--history") && (arguments_.back() == "--since" || arguments_.back() == "--until")) {
    return "staylit: " + arguments_.back() + " wants a value\n";
  }
  const bool fitsMachine =
      command.empty() || command == "--status" || command == "--help" || command == "--version";
  if (has("--system") && !fitsMachine) {
    return "staylit: --system goes alone, or with --diagnose or --status\n";
  }
  if (has("--follow") && !has("--status")) return "staylit: --follow goes with --status\n";
  if (has("--json") && !has("--status") && !has("--holds") && !has("--history") &&
      !has("--replay")) {
    return "staylit: --json goes with --status, --holds, --history or --replay\n";
  }
  if ((has("--since") || has("--until")) && !has("--history")) {
    return "staylit: --since and --until go with --history\n";
  }
  if (has("--set") && !has("--replay")) return "staylit: --set goes with --replay\n";
  if (has("--anonymous") && !has("--record")) return "staylit: --anonymous goes with --record\n";
  if (has("--ring") && !has("--record") && !has("--replay")) {
    return "staylit: --ring goes with --record or --replay\n";
  }
  if ((has("--html") || has("--open")) && !has("--history")) {
    return "staylit: --html and --open go with --history\n";
  }
  if ((has("--html") || has("--open")) && has("--json")) {
    return "staylit: --json is no web page\n";
  }
  const auto html = std::ranges::find(arguments_, "--html");
  const bool hasFile =
      html == arguments_.end() || (html + 1 != arguments_.end() && !(html + 1)->starts_with("--"));
  if (!hasFile) return "staylit: --html wants a file, or - for standard output\n";
  return std::nullopt;
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

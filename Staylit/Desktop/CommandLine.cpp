#include "Staylit/Desktop/CommandLine.h"

#include <algorithm>

namespace staylit {
namespace {

constexpr const char* kHelp =
    "Usage: staylit [OPTION]\n"
    "\n"
    "Keeps the computer awake while real work is going on. Without an option it starts;\n"
    "where it runs already, that one shows its Choose Apps window.\n"
    "\n"
    "  --diagnose     watch for a quarter of a minute, report what works, and end\n"
    "  --status       say what the one that runs does, and why\n"
    "    --follow     and then each change, until it is interrupted\n"
    "  --holds        list all that keeps the computer awake, and say whether it would sleep\n"
    "    --json       this, or the status, for programs\n"
    "  --doctor       check this machine, and say what to do\n"
    "  --pause        pause, or resume\n"
    "  --choose-apps  show the window in which applications are chosen\n"
    "  --settings     show the settings\n"
    "  --background   start, or do nothing where it runs already\n"
    "  --quit         end the Staylit that runs\n"
    "  --help         print this\n"
    "  --version      print the version\n"
    "\n"
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
  if (has("--help")) return kHelp;
  if (has("--version")) return version() + "\n";
  return std::nullopt;
}

ApplicationService::Request CommandLine::request() const {
  for (const std::string& argument : arguments_) {
    if (!argument.starts_with("--")) continue;
    const std::string name = argument.substr(2);
    if (ApplicationService::action(name)) return {name, false};
  }
  return {"", has("--background")};
}

}  // namespace staylit

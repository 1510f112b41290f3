#include "Platform/Linux/Processes/ShellWork.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace platform {
namespace {

constexpr std::array<std::string_view, 8> kShells = {"sh",  "bash", "dash", "zsh",
                                                     "ksh", "mksh", "ash",  "fish"};

/// This program contains many tools. It is a shell when it was started by a shell's name.
constexpr std::string_view kManyTools = "busybox";

/// Long options whose value is the next argument.
constexpr std::array<std::string_view, 3> kWithValue = {"--rcfile", "--init-file",
                                                        "--init-command"};

/// Takes the first argument off `arguments`.
std::string_view takeFirst(std::string_view& arguments) {
  const std::string_view first = arguments.substr(0, arguments.find('\0'));
  arguments.remove_prefix(std::min(arguments.size(), first.size() + 1));
  return first;
}

bool isOption(std::string_view argument) {
  return argument.size() > 1 && (argument.front() == '-' || argument.front() == '+');
}

/// How many of the arguments after `option` are its values. Short options may stand together, as in
/// "-euo pipefail".
std::ptrdiff_t valuesAfter(std::string_view option) {
  if (option.starts_with("--")) {
    return std::ranges::find(kWithValue, option) != kWithValue.end() ? 1 : 0;
  }
  return std::ranges::count(option, 'o') + std::ranges::count(option, 'O');
}

bool asksForCommand(std::string_view option) {
  if (option == "--command" || option.starts_with("--command=")) return true;
  return option[0] == '-' && option[1] != '-' && option.find('c') != std::string_view::npos;
}

}  // namespace

bool isShell(std::string_view file, std::string_view comm) {
  const std::string_view name = file == kManyTools ? comm : file;
  return std::ranges::find(kShells, name) != kShells.end();
}

ShellWork shellWork(std::string_view arguments) {
  using Kind = ShellWork::Kind;
  takeFirst(arguments);
  while (!arguments.empty()) {
    std::string_view argument = takeFirst(arguments);
    if (argument == "-" || argument == "--") {
      argument = takeFirst(arguments);
    } else if (isOption(argument)) {
      if (asksForCommand(argument)) return {Kind::command, {}};
      for (auto values = valuesAfter(argument); values > 0; --values)
        takeFirst(arguments);
      continue;
    }
    const std::string_view name = argument.substr(argument.rfind('/') + 1);
    return name.empty() ? ShellWork() : ShellWork{Kind::script, name};
  }
  return {};
}

}  // namespace platform

#include "Staylit/Desktop/ArgumentCheck.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>

#include "Staylit/NearestWord.h"
#include "Staylit/PauseTexts.h"

namespace staylit {
namespace {

using Arguments = std::vector<std::string>;

constexpr const char* kSeeHelp = "staylit: staylit --help lists all options";

enum class Role { command, modifier };

/// The word that follows an option.
enum class Word { none, length, optional, required };

struct Option {
  std::string_view name;
  Role role;
  Word word = Word::none;
  /// The commands that a modifier modifies; with none it goes with all.
  std::array<std::string_view, 4> commands{};
  std::string_view meaning{};  ///< Of a required word.
};

constexpr std::array kOptions = {
    Option{"--diagnose", Role::command},
    Option{"--status", Role::command},
    Option{"--follow", Role::modifier, Word::none, {"--status"}},
    Option{"--holds", Role::command},
    Option{"--json", Role::modifier, Word::none, {"--status", "--holds", "--history", "--replay"}},
    Option{"--history", Role::command},
    Option{"--since", Role::modifier, Word::required, {"--history"}, "a time"},
    Option{"--until", Role::modifier, Word::required, {"--history"}, "a time"},
    Option{"--html",
           Role::modifier,
           Word::required,
           {"--history"},
           "a file, or - for standard output"},
    Option{"--open", Role::modifier, Word::none, {"--history"}},
    Option{"--doctor", Role::command},
    Option{"--record", Role::command, Word::optional},
    Option{"--anonymous", Role::modifier, Word::none, {"--record"}},
    Option{"--ring", Role::modifier, Word::none, {"--record", "--replay"}},
    Option{"--replay", Role::command, Word::optional},
    Option{"--set", Role::modifier, Word::required, {"--replay"}, "KEY=VALUE"},
    Option{"--pause", Role::command, Word::length},
    Option{"--resume", Role::command},
    Option{"--toggle-pause", Role::command},
    Option{"--choose-apps", Role::command},
    Option{"--settings", Role::command},
    Option{"--background", Role::modifier},
    Option{"--quit", Role::command},
    Option{"--system", Role::modifier},
    Option{"--help", Role::command},
    Option{"--version", Role::command}};

bool has(const Arguments& arguments, std::string_view option) {
  return std::ranges::find(arguments, option) != arguments.end();
}

std::string_view withoutDashes(std::string_view argument) {
  return argument.substr(std::min(argument.find_first_not_of('-'), argument.size()));
}

std::string inSmallLetters(std::string_view text) {
  std::string small(text);
  std::ranges::transform(small, small.begin(), [](unsigned char letter) {
    return static_cast<char>(std::tolower(letter));
  });
  return small;
}

const Option* optionNamed(std::string_view name) {
  const auto* found = std::ranges::find(kOptions, name == "-h" ? "--help" : name, &Option::name);
  return found == kOptions.end() ? nullptr : found;
}

/// The option that was probably meant, also by a bare word; empty when none is near.
std::string nearestOption(std::string_view argument) {
  std::array<std::string_view, kOptions.size()> names;
  std::ranges::transform(kOptions, names.begin(),
                         [](const Option& option) { return withoutDashes(option.name); });
  const std::string written = inSmallLetters(withoutDashes(argument.substr(0, argument.find('='))));
  const auto nearest = nearestWord(written, names);
  return nearest ? "--" + *nearest : "";
}

std::string unknown(std::string_view argument) {
  const std::string nearest = nearestOption(argument);
  const std::string hint = nearest.empty() ? "" : "; " + nearest + " may be meant";
  return "staylit: there is no option '" + std::string(argument) + "'" + hint + "\n" + kSeeHelp +
         "\n";
}

std::string cannotBeDoneAtOnce(std::string_view one, std::string_view other) {
  return "staylit: " + std::string(one) + " and " + std::string(other) +
         " cannot be done at once\n" + kSeeHelp + "\n";
}

/// "--record or --replay"
std::string anyOf(const std::array<std::string_view, 4>& commands) {
  std::string text;
  for (std::size_t i = 0; i < commands.size() && !commands[i].empty(); ++i) {
    const bool isLast = i + 1 == commands.size() || commands[i + 1].empty();
    if (i > 0) text += isLast ? " or " : ", ";
    text += commands[i];
  }
  return text;
}

/// Walks over the arguments, each option with its word.
class Walk {
 public:
  explicit Walk(const Arguments& arguments) : arguments_(arguments) {}

  std::optional<std::string> complaint() {
    while (place_ < arguments_.size()) {
      if (auto why = complaintAboutNext()) return why;
    }
    return std::nullopt;
  }

  /// The one command; empty when there is none.
  [[nodiscard]] std::string_view command() const { return command_; }

 private:
  std::optional<std::string> complaintAboutNext() {
    const std::string& argument = arguments_[place_++];
    const Option* option = optionNamed(argument);
    if (!option && isAlmostDiagnose(argument)) return std::nullopt;
    if (!option) return unknown(argument);
    if (option->role == Role::command) {
      if (!command_.empty() && command_ != option->name) {
        return cannotBeDoneAtOnce(command_, argument);
      }
      command_ = option->name;
    }
    return complaintAboutWord(*option);
  }

  std::optional<std::string> complaintAboutWord(const Option& option) {
    if (option.word == Word::none) return std::nullopt;
    // A file may begin with one dash.
    const char* nextOption = option.word == Word::length ? "-" : "--";
    const bool isThere = place_ < arguments_.size() && !arguments_[place_].starts_with(nextOption);
    if (!isThere && option.word == Word::required) {
      return "staylit: " + std::string(option.name) + " wants " + std::string(option.meaning) +
             "\n";
    }
    if (!isThere) return std::nullopt;
    const std::string& word = arguments_[place_++];
    if (option.word != Word::length || pauseLengthIn(word)) return std::nullopt;
    return "staylit: '" + word + "' is no length of time; 45m, 2h or 1h30m would be one\n";
  }

  const Arguments& arguments_;
  std::size_t place_ = 1;  ///< The first argument is the program's name.
  std::string_view command_;
};

std::optional<std::string> complaintAboutCommand(const Arguments& arguments,
                                                 std::string_view command) {
  for (const Option& option : kOptions) {
    if (option.commands.front().empty() || !has(arguments, option.name)) continue;
    if (std::ranges::find(option.commands, command) != option.commands.end() && !command.empty())
      continue;
    return "staylit: " + std::string(option.name) + " goes with " + anyOf(option.commands) + "\n";
  }
  constexpr std::array<std::string_view, 4> kOfMachine = {"", "--status", "--help", "--version"};
  if (has(arguments, "--system") && std::ranges::find(kOfMachine, command) == kOfMachine.end()) {
    return "staylit: --system goes alone, or with --diagnose or --status\n";
  }
  const bool isPage = has(arguments, "--html") || has(arguments, "--open");
  if (isPage && has(arguments, "--json")) return "staylit: --json is no web page\n";
  return std::nullopt;
}

}  // namespace

std::optional<std::string> complaintAbout(const Arguments& arguments) {
  Walk walk(arguments);
  if (auto why = walk.complaint()) return why;
  return complaintAboutCommand(arguments, walk.command());
}

bool isAlmostDiagnose(std::string_view argument) {
  return argument.starts_with("-") &&
         inSmallLetters(withoutDashes(argument)).starts_with("diagnose");
}

}  // namespace staylit

#include "Staylit/EngineStatus.h"

#include <algorithm>

#include "Tidewell/Words.h"

namespace staylit {

using tidewell::Words;

namespace {

/// The status in the words of one language.
struct Summary {
  const Words& words;
  bool isShown;

  std::string operator()(const EngineStatus::Holding& holding) const {
    // TRANSLATORS: the texts of this file are the menu's first line and the tool tip of the symbol
    // in the panel. This one means: keeping the computer from sleeping.
    if (holding.names.empty()) return words.phrase("Holding sleep");
    const std::string& first = holding.names.front();
    // TRANSLATORS: the computer is kept awake because {app} works.
    if (holding.names.size() == 1) return words.phrase("Awake for {app}", {{"app", first}});
    return words.phraseFor(static_cast<std::int64_t>(holding.names.size()) - 1,
                           // TRANSLATORS: {count} further applications work beside {app}.
                           "Awake for {app} +{count} more", "Awake for {app} +{count} more",
                           {{"app", first}});
  }

  std::string operator()(const EngineStatus::Winding& winding) const {
    return words.phraseFor(winding.secondsLeft,
                           // TRANSLATORS: in {count} seconds the computer may sleep again.
                           "Work stopped — releasing in {count}s",
                           "Work stopped — releasing in {count}s");
  }

  std::string operator()(const EngineStatus::Blocked& blocked) const {
    // TRANSLATORS: the computer may sleep although something works. The reason is
    // "battery below 20%" or "Low Power Mode is on".
    return words.phrase("Not holding — {reason}",
                        {{"reason", isShown ? blocked.shownReason : blocked.reason}});
  }

  std::string operator()(const EngineStatus::Idle&) const {
    // TRANSLATORS: nothing works. For "Mac" use your word for any computer.
    return words.phrase("Idle — your Mac can sleep");
  }

  std::string operator()(const EngineStatus::Paused&) const {
    // TRANSLATORS: the user has paused Staylit.
    return words.phrase("Paused");
  }
};

struct CaseName {
  std::string_view operator()(const EngineStatus::Holding&) const { return "holding"; }
  std::string_view operator()(const EngineStatus::Winding&) const { return "winding"; }
  std::string_view operator()(const EngineStatus::Blocked&) const { return "blocked"; }
  std::string_view operator()(const EngineStatus::Idle&) const { return "idle"; }
  std::string_view operator()(const EngineStatus::Paused&) const { return "paused"; }
};

}  // namespace

bool EngineStatus::isSameState(const EngineStatus& other) const {
  if (std::holds_alternative<Winding>(value)) return std::holds_alternative<Winding>(other.value);
  const auto* mine = std::get_if<Holding>(&value);
  const auto* theirs = std::get_if<Holding>(&other.value);
  if (!mine || !theirs) return *this == other;
  return mine->names.size() == theirs->names.size() &&
         std::is_permutation(mine->names.begin(), mine->names.end(), theirs->names.begin());
}

std::string_view EngineStatus::name() const {
  return std::visit(CaseName(), value);
}

std::string EngineStatus::summary() const {
  return std::visit(Summary{Words::source(), false}, value);
}

std::string EngineStatus::shownSummary() const {
  return std::visit(Summary{Words::shown(), true}, value);
}

}  // namespace staylit

#include "Staylit/EngineStatus.h"

#include <algorithm>

namespace staylit {
namespace {

std::string summaryOf(const EngineStatus::Holding& holding) {
  if (holding.names.empty()) return "Holding sleep";
  std::string first = "Awake for " + holding.names.front();
  if (holding.names.size() == 1) return first;
  return first + " +" + std::to_string(holding.names.size() - 1) + " more";
}

std::string summaryOf(const EngineStatus::Winding& winding) {
  return "Work stopped — releasing in " + std::to_string(winding.secondsLeft) + "s";
}

std::string summaryOf(const EngineStatus::Blocked& blocked) {
  return "Not holding — " + blocked.reason;
}

std::string summaryOf(const EngineStatus::Idle&) {
  return "Idle — your Mac can sleep";
}

std::string summaryOf(const EngineStatus::Paused&) {
  return "Paused";
}

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
  return std::visit([](const auto& status) { return summaryOf(status); }, value);
}

}  // namespace staylit

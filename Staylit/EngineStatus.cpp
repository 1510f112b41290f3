#include "Staylit/EngineStatus.h"

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

}  // namespace

std::string EngineStatus::summary() const {
  return std::visit([](const auto& status) { return summaryOf(status); }, value);
}

}  // namespace staylit

#include "Staylit/Replay/MadeUpNames.h"

#include <cstddef>

#include "Tidewell/AppCatalog.h"

namespace staylit {
namespace {

/// The number of a process, which is nobody's name.
bool isProcessNumber(std::string_view name) {
  constexpr std::string_view kBegin = "pid ";
  return name.starts_with(kBegin) && name.size() > kBegin.size() &&
         name.find_first_not_of("0123456789", kBegin.size()) == std::string_view::npos;
}

std::string madeUpName(std::size_t number) {
  return (number < 10 ? "app-0" : "app-") + std::to_string(number);
}

}  // namespace

std::string MadeUpNames::of(std::string_view name) {
  if (isProcessNumber(name) || isKnown(name)) return std::string(name);
  const auto found = madeUp_.find(name);
  if (found != madeUp_.end()) return found->second;
  return madeUp_.emplace(name, madeUpName(madeUp_.size() + 1)).first->second;
}

void MadeUpNames::replaceIn(TapedApplication& application) {
  const tidewell::CatalogEntry* entry =
      tidewell::AppCatalog::lookup(application.bundleID, application.executable, text_);
  application.executable = of(application.executable);
  if (application.bundleID) application.bundleID = of(*application.bundleID);
  application.display =
      entry ? entry->display : application.bundleID.value_or(application.executable);
}

bool MadeUpNames::isKnown(std::string_view name) {
  return tidewell::AppCatalog::lookup(name, name, text_) != nullptr;
}

}  // namespace staylit

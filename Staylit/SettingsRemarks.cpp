#include "Staylit/SettingsRemarks.h"

#include <utility>

#include "Staylit/Prefs.h"
#include "Staylit/SettingMeaning.h"
#include "Tidewell/Log.h"

namespace staylit {

SettingsRemarks::SettingsRemarks(StaylitEngine& engine, Tell tell) : tell_(std::move(tell)) {
  subscription_ = engine.status().observe([this](const EngineStatus&) { look(); });
}

void SettingsRemarks::look() {
  const std::vector<std::string> remarks = Prefs::shared().defaults().takeRemarks(meaningOfSetting);
  if (remarks.empty()) return;
  for (const std::string& remark : remarks)
    tidewell::Log::error(remark);
  tell_(remarks);
}

}  // namespace staylit

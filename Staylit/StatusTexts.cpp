#include "Staylit/StatusTexts.h"

namespace staylit {

std::string rowOf(const tidewell::BusyApp& app, const tidewell::Words& words) {
  // TRANSLATORS: a row of the menu: an application and what it does: "ffmpeg — 187% CPU".
  return words.phrase("{app} — {work}", {{"app", app.display}, {"work", app.reason(words)}});
}

std::string whatWorks(const std::vector<tidewell::BusyApp>& busy,
                      const std::vector<std::string>& asking) {
  std::string line;
  for (const tidewell::BusyApp& app : busy)
    line += "  |  " + app.display + ": " + app.reason();
  for (const std::string& name : asking)
    line += "  |  " + name + ": asked to stay awake";
  return line;
}

std::string describe(const tidewell::PowerState& power) {
  return (power.hasBattery ? std::to_string(power.percentage) + "%" : "no battery") + " · " +
         (power.onAC ? "AC" : "battery") + " · lowPower=" + (power.lowPowerMode ? "true" : "false");
}

}  // namespace staylit

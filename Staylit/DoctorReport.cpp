#include "Staylit/DoctorReport.h"

#include <algorithm>
#include <cerrno>
#include <initializer_list>
#include <utility>

namespace staylit {
namespace {

using Check = DoctorReport::Check;
using Facts = DoctorFacts;
using Listing = DoctorFacts::Trial::Listing;

Check fine(std::string subject, std::string finding) {
  return {std::move(subject), std::move(finding), ""};
}

bool isGranted(const Facts& facts) {
  return std::ranges::any_of(
      facts.trials, [](const Facts::Trial& trial) { return trial.listing != Listing::refused; });
}

std::string whyNothingCanBeHeld(const Facts& facts) {
  if (isGranted(facts)) return "";
  if (facts.sleep.services.empty()) {
    return "neither logind nor a desktop's power service is here, as in a container; holds are "
           "recorded only";
  }
  if (facts.trialError == -ETIMEDOUT) return "the service that would have to grant it hangs";
  const bool isRefused = facts.trialError == -EACCES || facts.trialError == -EPERM;
  if (isRefused && facts.hasLogind && !facts.hasPolkit) {
    return "without polkit the login service gives holds to root alone";
  }
  if (isRefused) return "the service that would have to grant it refuses";
  return "no service grants a hold (error " + std::to_string(facts.trialError) + ")";
}

bool hangs(const Facts& facts) {
  return facts.trialError == -ETIMEDOUT || !facts.sleep.silent.empty();
}

std::string restartOf(const std::string& service) {
  if (service == "org.freedesktop.login1") return "As root: systemctl restart systemd-logind.";
  return "Restart " + service + ": log out and in again.";
}

/// What to do where a service hangs: to start what runs already would change nothing.
std::string restartOfTheHanging(const Facts& facts) {
  std::vector<std::string> services = facts.sleep.silent;
  if (services.empty()) {
    for (const Facts::Trial& trial : facts.trials) {
      if (trial.listing == Listing::refused) services.push_back(trial.service);
    }
  }
  std::string remedy;
  for (const std::string& service : services)
    remedy += (remedy.empty() ? "" : " ") + restartOf(service);
  return remedy;
}

Check sleepCheck(const Facts& facts) {
  Check check = fine("sleep", facts.sleep.summary());
  if (facts.sleep.canSleep == false) {
    check.finding += " Nothing needs to keep it awake.";
  } else if (!facts.sleep.silent.empty()) {
    check.remedy = restartOfTheHanging(facts);
  } else if (facts.sleep.verdict() == HoldsReport::Verdict::never) {
    check.finding +=
        " If it should: choose so in the desktop's settings, or without a desktop "
        "IdleAction=suspend in /etc/systemd/logind.conf.";
  } else if (facts.sleep.deciders.empty()) {
    check.remedy = "On a machine that should sleep, start systemd-logind.";
  }
  return check;
}

std::string names(const std::vector<Facts::Trial>& trials,
                  std::initializer_list<Listing> listings) {
  std::string result;
  for (const Facts::Trial& trial : trials) {
    if (std::ranges::find(listings, trial.listing) == listings.end()) continue;
    result += (result.empty() ? "" : ", ") + trial.service;
  }
  return result;
}

std::string remedyForNoGrant(const Facts& facts) {
  // Where a service hangs, whether it would ask polkit cannot be known.
  if (hangs(facts)) return restartOfTheHanging(facts);
  if (facts.hasLogind && !facts.hasPolkit && !facts.isRoot) return "Install polkitd.";
  return "On a machine that should sleep, start systemd-logind or the desktop's power service.";
}

Check holdCheck(const Facts& facts) {
  if (!isGranted(facts)) {
    return {"hold", "A hold that was tried was not granted.", remedyForNoGrant(facts)};
  }
  if (const std::string refusing = names(facts.trials, {Listing::refused}); !refusing.empty()) {
    return {"hold", "A hold that was tried is refused by " + refusing + ".",
            hangs(facts) ? restartOfTheHanging(facts)
                         : "See what polkit and the service's own log say."};
  }
  if (const std::string missing = names(facts.trials, {Listing::notListed}); !missing.empty()) {
    return {"hold", "A hold that was tried is granted, but not listed by " + missing + ".",
            "The service may have lost it: log in anew, and report it if that does not help."};
  }
  return fine("hold", "A hold that was tried is granted by " +
                          names(facts.trials, {Listing::listed, Listing::hasNoList}) +
                          ", and listed where there is a list.");
}

Check heedCheck(const Facts& facts) {
  const auto isAsked = [&facts](const HoldsReport::Decider& decider) {
    if (decider.action == HoldsReport::Decider::Action::nothing) return true;
    if (decider.isKeptOff) return true;
    return std::ranges::any_of(facts.trials, [&decider](const Facts::Trial& trial) {
      return trial.listing != Listing::refused &&
             std::ranges::find(decider.heeds, trial.lister) != decider.heeds.end();
    });
  };
  for (const HoldsReport::Decider& decider : facts.sleep.deciders) {
    if (isAsked(decider)) continue;
    return {"heed", decider.name + " may put the machine to sleep, and heeds no hold of Staylit.",
            "Let another do it: docs/Desktops.md says how for each desktop."};
  }
  return fine("heed", "Whoever may put the machine to sleep here heeds Staylit's hold.");
}

Check polkitCheck(const Facts& facts) {
  if (facts.hasPolkit) return fine("polkit", "polkit is here.");
  if (!facts.hasLogind) return fine("polkit", "No polkit is here, and nothing that would ask it.");
  if (facts.isRoot) return fine("polkit", "No polkit is here, and root needs none.");
  return {"polkit", "No polkit is here: the login service gives holds to root alone.",
          "Install polkitd."};
}

Check trayCheck(const Facts& facts) {
  switch (facts.tray) {
    case Facts::Tray::ready:
      return fine("tray", "A panel is here that shows the item.");
    case Facts::Tray::noDisplay:
      return fine("tray", "No display is here: Staylit works without its item.");
    case Facts::Tray::noPanel:
      return {"tray", "The panel's watcher is here, but no panel that shows items.",
              "Add the panel's tray (\"status notifier\"); docs/Desktops.md names it."};
    case Facts::Tray::noWatcher:
      break;
  }
  return {"tray", "No panel is here that shows status-notifier items.",
          "docs/Desktops.md names what each desktop needs; on GNOME it is an extension."};
}

Check windowsCheck(const Facts& facts) {
  switch (facts.windows) {
    case Facts::Windows::ready:
      return fine("windows", "The windows are installed.");
    case Facts::Windows::ofAnotherBuild:
      return {"windows", "The windows are of another version than the program.",
              "Install both packages, staylit and staylit-desktop, and start Staylit again."};
    case Facts::Windows::unfit:
      return {"windows", "The windows do not fit this system: Qt is missing, or a part of it.",
              "Install the package staylit-desktop anew."};
    case Facts::Windows::absent:
      break;
  }
  if (facts.tray == Facts::Tray::noDisplay) {
    return fine("windows", "The windows are not installed, and no display is here.");
  }
  return {"windows", "The windows are not installed.", "Install the package staylit-desktop."};
}

Check rightsCheck(const Facts& facts) {
  if (facts.isRoot) return fine("rights", "As root, Staylit sees the work of all users.");
  if (facts.seesOthers) {
    return fine("rights",
                "As this user, Staylit sees this user's work whole, and of others' the processor "
                "time.");
  }
  return {"rights", "Processes of other users are hidden here (/proc is mounted with hidepid).",
          "If their work should count, run Staylit as root, or mount /proc without hidepid."};
}

Check clockCheck(const Facts& facts) {
  if (facts.hasProcessorClocks) return fine("clock", "The processes' CPU clocks can be read.");
  return {"clock", "The processes' CPU clocks cannot be read; coarser files serve instead.",
          "Start Staylit outside of the sandbox that forbids clock_gettime."};
}

void addSettings(const Facts& facts, std::vector<Check>& checks) {
  if (!facts.settingsError.empty()) {
    checks.push_back({"settings", "The settings file cannot be read: " + facts.settingsError,
                      "Put a readable text file in its place, or none."});
  } else if (!facts.hasSettingsFile) {
    checks.push_back(
        fine("settings", "There is no settings file, so every setting has its default."));
  } else if (facts.settingsProblems.empty()) {
    checks.push_back(fine("settings", "The settings file has nothing wrong."));
  }
  for (const Facts::SettingsProblem& problem : facts.settingsProblems) {
    checks.push_back({"settings",
                      (problem.file.empty() ? "Settings" : problem.file) + ", line " +
                          std::to_string(problem.line) + ": " + problem.text,
                      "Mend that line; README.md and staylit(1) list the keys."});
  }
}

Check runningCheck(const Facts& facts) {
  if (facts.isRunning) return fine("running", "Staylit runs.");
  if (!facts.outOfReach.empty()) {
    return {"running", "Staylit cannot be asked: " + facts.outOfReach + ".",
            "Nothing, if it shall run there. Else end it, and start it in this session."};
  }
  return {"running", "No Staylit runs in this session.",
          "Start it from the menu of applications, or without a desktop by systemctl --user "
          "enable --now staylit."};
}

Check journalCheck(const Facts& facts) {
  if (facts.hasJournal) return fine("journal", "The log goes to the journal.");
  return {"journal", "No journal is here: the log goes to standard error.",
          "Look where the standard error of what starts Staylit goes."};
}

}  // namespace

bool DoctorReport::isAskedFor(const std::vector<std::string>& arguments) {
  const auto has = [&arguments](const char* option) {
    return std::ranges::find(arguments, option) != arguments.end();
  };
  return has("--doctor") && !has("--diagnose");
}

DoctorReport DoctorReport::of(const DoctorFacts& facts) {
  DoctorReport report;
  report.nothingCanBeHeld = whyNothingCanBeHeld(facts);
  report.checks = {sleepCheck(facts), holdCheck(facts)};
  if (isGranted(facts)) report.checks.push_back(heedCheck(facts));
  for (Check& check : std::vector<Check>{polkitCheck(facts), trayCheck(facts), windowsCheck(facts),
                                         rightsCheck(facts), clockCheck(facts)})
    report.checks.push_back(std::move(check));
  addSettings(facts, report.checks);
  report.checks.push_back(runningCheck(facts));
  report.checks.push_back(journalCheck(facts));
  report.particulars = facts.particulars;
  return report;
}

std::vector<std::string> DoctorReport::lines(Signs signs) const {
  const bool isDrawn = signs == Signs::drawn;
  const std::string good = isDrawn ? "✓ " : "ok ";
  const std::string bad = isDrawn ? "✗ " : "!! ";
  const std::string indent(isDrawn ? 2 : 3, ' ');
  std::vector<std::string> lines;
  if (!nothingCanBeHeld.empty()) {
    lines.push_back("Nothing can be held here: " + nothingCanBeHeld + ".");
    lines.emplace_back();
  }
  std::string summary;
  std::string told;
  for (const Check& check : checks) {
    lines.push_back((check.remedy.empty() ? good : bad) + check.finding);
    if (check.remedy.empty()) continue;
    lines.push_back(indent + "To do: " + check.remedy);
    if (check.subject == told) continue;
    told = check.subject;
    summary += (summary.empty() ? "" : ", ") + told;
  }
  lines.emplace_back();
  lines.emplace_back("For a report, paste this:");
  lines.emplace_back();
  for (const std::string& particular : particulars)
    lines.push_back("    " + particular);
  lines.push_back("    to do: " + (summary.empty() ? "nothing" : summary));
  return lines;
}

DoctorReport::Exit DoctorReport::exitStatus() const {
  if (!nothingCanBeHeld.empty()) return trouble;
  const bool isFine =
      std::ranges::all_of(checks, [](const Check& check) { return check.remedy.empty(); });
  return isFine ? fine : somethingToDo;
}

}  // namespace staylit

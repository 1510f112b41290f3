#include "Tests/Campaign/Campaigns.h"

#include <vector>

#include "Tests/Campaign/ClockSteps.h"
#include "Tests/Campaign/VirtualTime.h"

namespace staylit::campaign {

std::span<const Campaign> campaigns() {
  static const std::vector<Campaign> all = {
      // name, what is done, what must hold, function
      {"kill", "kill -9 at random moments: start, hold, release and rename",
       "no lock left after 100 ms", killAtRandomMoments},
      {"soak", "200 programs a second, each under a new name, and names that work and rest",
       "memory +2 MB at most, no more descriptors", soak},
      {"scale", "very many processes, names, sockets, inhibitors, desktop files",
       "a tick takes 100 ms of CPU time at most, bounded memory", scale},
      {"displays", "a window asked for on silent, stopped and refusing displays",
       "the loop alive, the hold released within 5 s", displays},
      {"displays-that-stop-later", "a display stops when there is a window",
       "a window on a display that answers; the program ends, and no hold outlives it",
       displaysThatStopLater},
      {"hostile-names",
       "names with control characters, broken UTF-8 and markup through every way in and out",
       "no control character, valid UTF-8, no markup", hostileNames},
      {"damaged-messages",
       "random calls of menu and application; random answers for the lists and as properties",
       "no crash, the program goes on answering, clean and bounded text in the lists",
       damagedMessages},
      {"forged-messages",
       "another user sends each kind of forged signal and call 10,000 times, and all at full rate",
       "the locks unchanged, the program answers, memory +1 MB at most", forgedMessages},
      {"several-staylits", "two or three of different sessions on one system bus, and one work",
       "all let go after the work", severalStaylits},
      {"clock-steps", "the program's wall clock is set, in each state that it can be in",
       "working stays held, quiet is released within the grace period and 4 s", clockSteps},
      {"virtual-time",
       "random machines live for 10,000 h awake: work, pauses, sleeps, late ticks, batteries, "
       "requests, edits, a clock that is set",
       "status, holds, lists and log are those of a second, naive account of the rules",
       virtualTime},
      {"restarts-of-logind", "logind is restarted at random phases of a tick, 100 times",
       "held again within 10 s; never two holds left",
       [](Effort effort) { return restarts(effort, "logind"); }},
      {"restarts-of-logind-without-memory",
       "logind without a memory is restarted at random phases of a tick, 100 times",
       "held again within 10 s; never two holds left",
       [](Effort effort) { return restarts(effort, "logind without a memory"); }},
      {"restarts-of-the-system-bus",
       "the system bus is restarted at random phases of a tick, 100 times",
       "held again within 10 s; never two holds left",
       [](Effort effort) { return restarts(effort, "the system bus"); }},
      {"restarts-of-the-session-bus",
       "the session bus is restarted at random phases of a tick, 100 times",
       "held again within 10 s; never two holds left; the item registered again",
       [](Effort effort) { return restarts(effort, "the session bus"); }},
      {"restarts-of-the-session-manager",
       "the session manager is restarted at random phases of a tick, 100 times",
       "held again within 10 s; never two holds left",
       [](Effort effort) { return restarts(effort, "the session manager"); }},
      {"restarts-of-the-power-service",
       "the power service is restarted at random phases of a tick, 100 times",
       "held again within 10 s; never two holds left",
       [](Effort effort) { return restarts(effort, "the power service"); }},
      {"restarts-of-upower", "UPower is restarted at random phases of a tick, 100 times",
       "held again within 10 s; never two holds left",
       [](Effort effort) { return restarts(effort, "UPower"); }},
      {"restarts-of-the-watcher", "the watcher is restarted at random phases of a tick, 100 times",
       "held again within 10 s; never two holds left; the item registered again",
       [](Effort effort) { return restarts(effort, "the watcher"); }},
      {"stops-of-staylit",
       "Staylit is stopped for 1 to 300 s and continued, and something changes meanwhile",
       "the right state within two ticks", stopsOfStaylit},
      {"stops-of-logind",
       "logind is stopped for 1 to 300 s and continued, and something changes meanwhile",
       "the right state within two ticks", stopsOfLogind},
      {"stops-of-the-system-bus",
       "the system bus is stopped for 1 to 300 s and continued, and something changes meanwhile",
       "the right state within two ticks", stopsOfTheSystemBus},
      {"stops-of-the-session-bus",
       "the session bus is stopped for 1 to 300 s and continued, and the program is paused then",
       "the right state within two ticks", stopsOfTheSessionBus},
      {"settings-file", "a writer is killed, two write at once, a person edits meanwhile",
       "nothing that was stored is lost, the file is whole", settingsFiles},
      {"failing-calls", "a system call fails: each of its kind's 1st to 50th calls",
       "no crash, settings whole, no false hold", failingCalls},
  };
  return all;
}

}  // namespace staylit::campaign

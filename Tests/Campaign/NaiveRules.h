#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace staylit::campaign {

/// The values in the settings file. A value is absent where the user has set none.
struct NaiveSettings {
  std::optional<std::int64_t> graceSeconds;
  std::optional<std::int64_t> batteryThreshold;
  std::optional<bool> respectLowPower;
  std::optional<bool> keepScreenOn;
  std::optional<std::vector<std::string>> ignoredApps;
  std::optional<double> cpuThresholdPercent;
  std::optional<double> diskThresholdKBps;
  std::optional<double> netThresholdKBps;
  std::optional<std::int64_t> sustainSeconds;
  std::optional<bool> honorAppAssertions;
};

/// A process as it is seen at a tick.
struct NaiveProcess {
  std::int32_t pid = 0;
  std::string executable;
  bool hasApplication = false;
  std::optional<std::string> bundle;
  std::optional<std::string> localizedName;
  std::uint64_t cpuNanos = 0;
  std::uint64_t diskBytes = 0;

  [[nodiscard]] std::string key() const { return bundle ? *bundle : executable; }
};

struct NaiveAssertion {
  std::int64_t pid = 0;
  std::string type;
  std::optional<std::int64_t> level;
  // The application of the process.
  bool hasApplication = false;
  std::optional<std::string> bundle;
  std::optional<std::string> localizedName;
};

struct NaiveBattery {
  bool isThere = false;
  bool isOnMains = false;
  std::int64_t charge = 100;
};

/// Everything that can be seen of a machine at one moment.
struct NaiveSight {
  std::int64_t nanos = 0;
  std::vector<NaiveProcess> processes;
  std::map<std::int32_t, std::uint64_t> networkBytes;
  std::vector<NaiveAssertion> assertions;
  NaiveBattery battery;
  bool lowPower = false;
  NaiveSettings settings;
  std::int32_t systemHoldFailure = 0;
  bool displayHoldFails = false;
};

struct NaiveApp {
  std::string id;
  std::string display;
  std::string category;
  double cpu = 0;
  double disk = 0;
  double net = 0;
  double busyFor = 0;
};

/// A second account of the rules by which the program decides, to compare the program with. It is
/// as plain as possible, uses nothing of the program, and need not be fast.
class NaiveRules {
 public:
  /// With `countsWhole`, what ended processes had used counts until their application has ended.
  explicit NaiveRules(bool countsWhole) : countsWhole_(countsWhole) {}

  /// `order` has the identifiers of the busy applications in the program's order, which decides the
  /// order of those that are equally busy.
  void tick(const NaiveSight& sight, const std::vector<std::string>& order);
  void setPaused(bool paused, const NaiveSight& sight, const std::vector<std::string>& order);
  void systemWillSleep() { release(); }
  void systemDidWake();

  // What the rules decided, to be compared afterwards.
  std::string status = "idle";
  std::vector<NaiveApp> busy;        ///< The applications that the engine shows, in its order.
  std::vector<NaiveApp> candidates;  ///< In no order.
  std::vector<std::string> asserting;
  bool isHeld = false;
  std::string holdName;
  bool isDisplayHeld = false;
  std::string displayHoldName;
  std::vector<std::string> log;
  bool isPaused = false;

 private:
  struct Sum {
    std::string display;
    std::string category;
    std::optional<double> floor;
    std::uint64_t cpu = 0;
    std::uint64_t disk = 0;
    std::uint64_t net = 0;
  };
  /// What ended processes of one application had used.
  struct Account {
    NaiveProcess first;  ///< The application's first process, which names the application.
    std::uint64_t cpu = 0;
    std::uint64_t disk = 0;
    bool hasEnded = false;  ///< Whether one of its processes has ended.
  };

  std::vector<NaiveProcess> rowsOf(const NaiveSight& sight);
  std::map<std::string, Sum> sumsOf(const NaiveSight& sight);
  void look(const NaiveSight& sight, const std::vector<std::string>& order);
  std::map<std::string, NaiveApp> findCandidates(const NaiveSight& sight,
                                                 const std::map<std::string, Sum>& current,
                                                 double dt, const std::set<std::string>& ignored);
  void listBusy(std::map<std::string, NaiveApp> qualified, const std::vector<std::string>& order);
  std::vector<std::string> assertingNames(const NaiveSight& sight) const;
  void hold(const std::string& reason, const NaiveSight& sight);
  void release();
  void forgetHistory();

  bool countsWhole_;
  std::map<std::int32_t, NaiveProcess> lastSeen_;
  std::map<std::string, Account> accounts_;
  std::map<std::string, Sum> previous_;
  std::optional<std::int64_t> previousAt_;
  std::map<std::string, std::int64_t> busySince_;
  std::optional<std::int64_t> quietSince_;
};

}  // namespace staylit::campaign

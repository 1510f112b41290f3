#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace staylit::campaign {

/// What the settings file says; absent where the user has set nothing.
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
  /// The application of that process.
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

/// The rules by which the program decides, once more, as plainly as they can be said: without
/// anything of the program, and without a thought for speed. For comparing the two.
class NaiveRules {
 public:
  /// With `countsWhole`, what ended processes had used counts until their application has ended.
  explicit NaiveRules(bool countsWhole) : countsWhole_(countsWhole) {}

  /// `order` are the identifiers in the order in which the program lists the busy ones: those that
  /// are equally busy may come in any.
  void tick(const NaiveSight& sight, const std::vector<std::string>& order);
  void setPaused(bool paused, const NaiveSight& sight, const std::vector<std::string>& order);
  void systemWillSleep() { release(); }
  void systemDidWake();

  // What is to be seen of it afterwards.
  std::string status = "idle";
  std::vector<NaiveApp> busy;        ///< What the engine shows, in the order given.
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
    NaiveProcess first;  ///< Names the application.
    std::uint64_t cpu = 0;
    std::uint64_t disk = 0;
    bool hasEnded = false;  ///< One of its processes ever did.
  };

  std::vector<NaiveProcess> rowsOf(const NaiveSight& sight);
  void look(const NaiveSight& sight, const std::vector<std::string>& order);
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
  std::vector<NaiveApp> lastBusy_;
  std::optional<std::int64_t> quietSince_;
};

}  // namespace staylit::campaign

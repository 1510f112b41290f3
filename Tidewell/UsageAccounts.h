#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Tidewell/Ports/RunningApplications.h"
#include "Tidewell/TextMap.h"

namespace tidewell {

/// CPU time and disk bytes that belong together. In whatever units their owner uses.
struct Usage {
  std::uint64_t time = 0;
  std::uint64_t disk = 0;

  Usage& operator+=(const Usage& more) {
    time += more.time;
    disk += more.disk;
    return *this;
  }
  /// The part that goes with `partTime` of its time: nothing for none, all for all.
  [[nodiscard]] Usage part(std::uint64_t partTime) const;

  friend bool operator==(const Usage&, const Usage&) = default;
};

/// What ended processes had used, kept under the name and application that they had.
///
/// An account that was ever used is listed like a process, under an identifier that no process can
/// have. Their number is bounded: an account under whose name nothing runs is folded into one
/// without a name, `kFolded`, when it has not grown for a long time, or when there are too many. So
/// the sum over all accounts never shrinks. Main thread only.
class UsageAccounts {
 public:
  /// Beyond the identifiers of any system.
  static constexpr std::int32_t kFirstIdentifier = 0x4000'0000;
  /// The account of what was folded.
  static constexpr std::int32_t kFolded = kFirstIdentifier;
  /// How many are listed at most, beside that and those under whose names something runs.
  static constexpr std::size_t kMost = 256;

  struct Account {
    std::int32_t identifier = 0;
    std::string key;  ///< As the activity monitor counts it; empty only for what was folded.
    std::string path;
    /// Names the account's application; null for none.
    std::shared_ptr<const RunningApplication> application;
    Usage usage;
    std::uint64_t lastGrowth = 0;  ///< The pass of the last addition.
    bool isListed = false;         ///< Whether it was ever used.
  };

  UsageAccounts();

  /// The account of the application key that `path` and `application` give, made where need be.
  /// There must be such a key.
  std::int32_t reserve(std::string_view path, const RunningApplication* application);

  /// Adds to an account, which is listed from then on. Does nothing for one that is not there.
  void add(std::int32_t identifier, const Usage& usage);

  /// Begins another pass.
  void nextPass() { ++pass_; }

  /// Whether it is time to `fold`.
  [[nodiscard]] bool isCrowded() const;

  /// Folds stale accounts, and then, if there are still too many, those that grew longest ago.
  /// `liveKeys` are the application keys of all processes, whose accounts stay.
  void fold(const TextMap<bool>& liveKeys);

  /// All of them, ascending by identifier; also those that are not listed.
  [[nodiscard]] const std::vector<Account>& accounts() const { return accounts_; }
  [[nodiscard]] std::size_t listedCount() const { return listedCount_; }
  /// Null when there is none.
  [[nodiscard]] const Account* find(std::int32_t identifier) const;

  /// The key under which the activity monitor counts a process.
  static std::string key(std::string_view path, const RunningApplication* application);

 private:
  Usage takeStale(const TextMap<bool>& liveKeys);
  Usage takeOldest(const TextMap<bool>& liveKeys);
  [[nodiscard]] std::size_t listedByName() const;

  std::uint64_t pass_ = 0;
  std::uint64_t lastFold_ = 0;
  std::int32_t nextIdentifier_ = kFolded + 1;
  std::vector<Account> accounts_;  ///< That of what was folded comes first.
  std::size_t listedCount_ = 0;
};

}  // namespace tidewell

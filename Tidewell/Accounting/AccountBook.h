#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Tidewell/Ports/RunningApplications.h"

namespace tidewell {

/// CPU time and disk bytes that belong together, in the units of whoever owns them.
struct Usage {
  std::uint64_t time = 0;
  std::uint64_t disk = 0;

  Usage& operator+=(const Usage& more) {
    time += more.time;
    disk += more.disk;
    return *this;
  }
  /// The part that belongs to `partTime` of the time: the same share of the bytes.
  [[nodiscard]] Usage part(std::uint64_t partTime) const;

  friend bool operator==(const Usage&, const Usage&) = default;
};

/// What ended processes had used, kept under the name and application that they had.
///
/// An account that was ever used is listed like a process, under an identifier that no process can
/// have. It is dropped when nothing runs under its name and nothing was added to it on a pass: then
/// the application has ended. So there are never more accounts than names that run, or ran one pass
/// ago. Main thread only.
class AccountBook {
 public:
  /// Every account has a higher identifier than any process of any system.
  static constexpr std::int32_t kFirstIdentifier = 0x4000'0000;

  struct Account {
    std::int32_t identifier = 0;
    std::string key;  ///< The activity monitor counts the account under this key. Never empty.
    std::string path;
    /// The account's application; null if it belongs to none.
    std::shared_ptr<const RunningApplication> application;
    Usage usage;
    std::uint64_t lastAddition = 0;  ///< The pass on which something was added last.
    std::size_t processes = 0;       ///< How many run under its name.
    bool isListed = false;           ///< Whether it was ever used.
  };

  /// The account for `path` and `application`, which is made if there is none. The two must give a
  /// key that is not empty.
  std::int32_t reserve(std::string_view path, const RunningApplication* application);

  /// Adds to an account, which is listed from then on. Does nothing if there is no such account.
  void add(std::int32_t identifier, const Usage& usage);

  /// Begins another pass.
  void nextPass() { ++pass_; }

  /// A process runs under the account's name from now on. Does nothing if there is no such account.
  void addProcess(std::int32_t identifier);

  /// Such a process ended or took another name. Does nothing if there is no such account.
  void removeProcess(std::int32_t identifier);

  /// Drops the accounts of applications that have ended.
  void dropEnded();

  /// All accounts, ascending by identifier, also those that are not listed.
  [[nodiscard]] const std::vector<Account>& accounts() const { return accounts_; }
  /// The account with that identifier, or null.
  [[nodiscard]] const Account* find(std::int32_t identifier) const;

  /// The key under which the activity monitor counts a process; empty for one without a name.
  static std::string key(std::string_view path, const RunningApplication* application);

 private:
  Account* findToChange(std::int32_t identifier);

  std::uint64_t pass_ = 0;
  std::int32_t nextIdentifier_ = kFirstIdentifier;
  std::vector<Account> accounts_;  ///< Ascending by identifier.
};

}  // namespace tidewell

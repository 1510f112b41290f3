#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "Tidewell/Accounting/FollowedProcess.h"
#include "Tidewell/Ports/ProcessGroups.h"

namespace tidewell {

/// Finds usage that the kernel charged to no process, or to one that does not belong to the work:
/// that of workers whose parent ignores their end, and that of orphans. It compares what each group
/// of processes has used with what was counted for its members. The difference goes to the oldest
/// member that lives.
///
/// * Sums since the group began are compared, so what is read a moment too early or too late does
///   not add up. A group begins anew when it is credited, denied or moved into, when a charge is
///   taken back, and partly when its last reading is old. Each beginning can add one difference.
/// * When a process was credited with what it reaped of another group's members, as a service
///   manager is, this is taken back, as far as it was found with that other group. So nothing is
///   counted twice. What the kernel has told nobody else stays where it is.
/// * Nothing is credited while the group has a member that cannot be read, or one that was moved
///   into it. The group begins anew then, and the first credit after that is dropped.
/// * Only what was used since the last pass is credited. If the group was not read on that pass, a
///   hidden process may have used the time and ended: a later reaper is charged for it. So orphans
///   of a group that slept for long count for their reaper on the first pass.
/// * The credit, and what members have reaped, are together at most what the processors gave.
/// * A credit does not end. If no reaper was charged for it, it may be taken back much later from
///   the charge of a foreign reaper. An end after a pass would count twice what is reaped late.
/// * A hidden process that was never seen at work, and works and ends between two passes, is taken
///   for an orphan: the oldest member gets that time if another group's process reaped it.
/// * More counted than used, with nothing reaped, means that a member was moved to another group.
///   Then the groups of the members are read anew, and these groups begin anew.
/// * The group of the program that counts is left out, because its tools are in it.
///
/// A group is read when one of its members has run, and only if a process may have come and gone.
/// All groups are read when a reaper was charged for more than the credits tell of. The members of
/// a group are listed only before it is credited. Main thread only; the groups must outlive it.
class GroupBalance {
 public:
  struct Terms {
    std::uint64_t most = 0;      ///< What can have been used since the last pass.
    std::int64_t tolerance = 0;  ///< How much the readings may differ.
  };

  explicit GroupBalance(ProcessGroups& groups) : groups_(groups) {}

  /// Counts for the living what was used unseen on this pass. Both lists are those of the pass, all
  /// charges are settled.
  void settle(std::vector<FollowedProcess>& living, std::vector<FollowedProcess>& gone,
              const Terms& terms);

 private:
  enum class Which : std::uint8_t { ran, all };

  struct Group {
    std::int64_t unseen = 0;     ///< Used, and not counted for a member.
    std::uint64_t time = 0;      ///< As it was read last.
    std::uint64_t reaped = 0;    ///< Counted on this pass for what members have reaped.
    std::uint64_t lastRead = 0;  ///< The pass on which `time` was read.
    bool wasRead = false;        ///< Whether `time` is known.
    bool ran = false;            ///< Whether a member ran since it was read.
    bool hasMoved = false;   ///< Whether a member came or went, so that its time is with another.
    bool wasDenied = false;  ///< Whether it had a member that is not known when it was read last.
    bool isLeftOut = false;
  };

  void collect(std::vector<FollowedProcess>& processes, bool areLiving);
  void findGroup(FollowedProcess& process);
  void noteMove(std::int32_t number);
  void settleGroups(std::vector<FollowedProcess>& living, std::vector<FollowedProcess>& gone,
                    const Terms& terms);
  void read(Which which);
  void read(Group& group, std::uint64_t time);
  void creditAll(std::vector<FollowedProcess>& living, const Terms& terms);
  [[nodiscard]] std::uint64_t foreignCharge(const std::vector<FollowedProcess>& living,
                                            const std::vector<FollowedProcess>& gone,
                                            const Terms& terms) const;
  void credit(std::int32_t number, Group& group, std::vector<FollowedProcess>& living,
              std::uint64_t most);
  void explain(std::int32_t number, Group& group, std::vector<FollowedProcess>& living,
               std::vector<FollowedProcess>& gone);
  void takeBack(std::int32_t number, Group& group, std::vector<FollowedProcess>& processes);
  std::uint64_t takeBack(FollowedProcess& process, std::uint64_t most);
  [[nodiscard]] bool isForeignManager(const FollowedProcess& reaper,
                                      const std::vector<FollowedProcess>& living) const;
  bool readMembersAnew(std::int32_t number, std::vector<FollowedProcess>& living);
  void forgetThoseLeft(const std::vector<FollowedProcess>& living,
                       const std::vector<FollowedProcess>& gone);

  ProcessGroups& groups_;
  std::map<std::int32_t, Group> byNumber_;
  std::set<std::int32_t> perhapsLeft_;  ///< The groups that members have come to or gone from.
  std::uint64_t pass_ = 0;              ///< The number of this pass.
  std::uint64_t credited_ = 0;          ///< Not yet taken back from a reaper in another group.
  bool someReaped_ = false;             ///< Whether this pass credits a reaper.
};

}  // namespace tidewell

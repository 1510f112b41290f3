#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Staylit/History/HistoryTexts.h"
#include "Staylit/Replay/Replay.h"
#include "Tidewell/Ports/Clock.h"
#include "Tidewell/Ports/Text.h"

namespace staylit {

/// What a replay found, for people and for programs. A value.
class ReplayReport {
 public:
  /// Of the JSON form. Grows when a member goes or means something else; not when one is added.
  static constexpr std::int64_t kJsonVersion = 2;

  /// For how long something kept the machine awake: what was, and what would have been.
  struct Sum {
    std::chrono::nanoseconds was{};
    std::chrono::nanoseconds would{};
    [[nodiscard]] std::chrono::nanoseconds difference() const { return would - was; }
  };
  struct NamedSum {
    std::string name;
    Sum sum;
  };

  /// `plain` is the replay as recorded. `changed`, if there is one, is the replay with `settings`,
  /// which are "key=value" each.
  ReplayReport(ReplayResult plain, std::optional<ReplayResult> changed,
               std::vector<std::string> settings);

  /// The time held in all.
  [[nodiscard]] const Sum& total() const { return total_; }
  /// For each application and each who asked, with the grace period after it; the longest first.
  /// What several held at the same time counts for each.
  [[nodiscard]] const std::vector<NamedSum>& names() const { return names_; }

  /// Whether the plain replay decided at each tick as the recording did.
  [[nodiscard]] bool isFaithful() const { return plain_.differingTicks == 0; }
  [[nodiscard]] bool isEmpty() const { return plain_.ticks == 0; }

  /// What would have been held, as the history says it, then the difference in sentences and as a
  /// table. Main thread only, because times are local.
  [[nodiscard]] std::vector<std::string> lines(tidewell::Text& text,
                                               HistoryTexts::Style style) const;
  /// One line. Main thread only.
  [[nodiscard]] std::string json() const;

 private:
  [[nodiscard]] const ReplayResult& result() const { return changed_ ? *changed_ : plain_; }
  [[nodiscard]] HistoryTimeline timeline() const;
  void add(const ReplayStretch& stretch);
  Sum& sumOf(const std::string& name);
  [[nodiscard]] std::string aboutRecording() const;
  [[nodiscard]] std::vector<std::string> aboutFaithfulness() const;
  [[nodiscard]] std::vector<std::string> history(HistoryTexts::Style style) const;
  [[nodiscard]] std::vector<std::string> comparison(tidewell::Text& text) const;
  [[nodiscard]] std::string aboutWhatWas() const;
  [[nodiscard]] std::string aboutDifference() const;
  [[nodiscard]] std::string whoseIs(const std::vector<std::vector<std::string>>& changes) const;
  [[nodiscard]] std::vector<std::string> table(tidewell::Text& text) const;

  ReplayResult plain_;
  std::optional<ReplayResult> changed_;
  std::vector<std::string> settings_;
  Sum total_;
  std::vector<NamedSum> names_;
  std::chrono::nanoseconds length_{};
  /// The names of each stretch that was held and would not have been, and the other way round.
  std::vector<std::vector<std::string>> lost_;
  std::vector<std::vector<std::string>> gained_;
};

}  // namespace staylit

#pragma once

#include <string>
#include <vector>

/// A made-up machine over time: what its programs use, when one of them asks to stay awake, and
/// when the machine runs on its battery. All times are whole seconds since the picture's left edge.
namespace scene {

/// From `begin` to `end` something uses `percent` of one core.
struct Work {
  int begin;
  int end;
  double percent;
};

struct Program {
  std::string name;
  std::vector<Work> work;

  /// What it uses on average in the second that begins at `second`.
  [[nodiscard]] double percentAt(int second) const;
};

struct Span {
  int begin;
  int end;

  [[nodiscard]] bool contains(int second) const { return second >= begin && second < end; }
};

/// The programs that work: one that the catalogue knows, one that it does not.
const std::vector<Program>& programs();

/// Works too little to count, and asks to stay awake.
inline constexpr const char* kAskingProgram = "mpv";
inline constexpr Span kAsking{330, 362};

inline constexpr Span kOnBattery{430, 460};
inline constexpr int kBatteryPercent = 19;

inline constexpr int kEnd = 520;

}  // namespace scene

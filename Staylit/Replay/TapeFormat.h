#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace staylit::tapeFormat {

// What the encoder and the decoder of a tape agree on.
//
// A file of a tape is `kOpening`, then blocks (`TapeBlock.h`). The contents of the blocks are one
// stream of frames. A frame is a `Frame`, a moment and what belongs to the frame. The first frame
// is `began`. Numbers are told as differences: a moment by how much the interval differs from the
// one before, a counter by its growth since the last frame that told of it. A text is told once and
// then goes by its number.

/// A later version that an earlier program cannot read has another number here.
inline constexpr std::string_view kOpening = "Staylit tape 1\n";

enum class Frame : std::uint8_t {
  began = 1,
  tick = 2,
  paused = 3,
  resumed = 4,
  willSleep = 5,
  didWake = 6,
  ended = 7,
  clockSet = 8,
};

/// What a tick's frame has besides the applications that changed, in this order.
namespace part {
inline constexpr std::uint64_t quietSince = 1;
inline constexpr std::uint64_t quietJudgedAt = 2;
inline constexpr std::uint64_t asserting = 4;
inline constexpr std::uint64_t power = 8;
inline constexpr std::uint64_t settings = 16;
inline constexpr std::uint64_t names = 32;     ///< Of applications that are new or have others.
inline constexpr std::uint64_t presence = 64;  ///< Applications that came or went.
inline constexpr std::uint64_t outcome = 128;
inline constexpr std::uint64_t all = 255;
}  // namespace part

/// Which counters of an application changed; the place in the list stands above these bits.
namespace counter {
inline constexpr std::uint64_t cpu = 1;
inline constexpr std::uint64_t disk = 2;
inline constexpr std::uint64_t net = 4;
inline constexpr unsigned bits = 3;
}  // namespace counter

enum class Outcome : std::uint8_t { holding, winding, blocked, idle, paused };

enum class SettingKind : std::uint8_t { truth, integer, real, texts };

/// The flags of the frame `began`.
inline constexpr std::uint64_t kIsFirst = 1;
inline constexpr std::uint64_t kIsMadeUp = 2;

/// The flags of a power state.
inline constexpr std::uint64_t kOnAC = 1;
inline constexpr std::uint64_t kLowPowerMode = 2;
inline constexpr std::uint64_t kHasBattery = 4;

/// No tape has more texts, applications or elements of a list than this.
inline constexpr std::size_t kMostTexts = 1 << 20;
inline constexpr std::size_t kMostApplications = 1 << 17;
inline constexpr std::size_t kMostElements = 1 << 14;

}  // namespace staylit::tapeFormat

#include "Staylit/Replay/TapeWriter.h"

#include <chrono>
#include <utility>

#include "Staylit/Replay/TapeBlock.h"
#include "Staylit/Replay/TapeFormat.h"

namespace staylit {
namespace {

/// What a program that is killed may lose.
constexpr std::chrono::minutes kLongestGathering{1};
/// More frames than this are not worth gathering: the compression gets no better.
constexpr std::size_t kMostGathered = std::size_t{1} << 16;
/// The memory for texts that will hardly be seen again stays small.
constexpr std::size_t kMostTextsInOneStretch = 20'000;

}  // namespace

void TapeWriter::begin(const TapeBegan& began) {
  encoder_.begin(began);
  needsBeginning_ = false;
  noteTime(began.at);
}

void TapeWriter::add(const TapedTick& tick, const TapedInputs& inputs) {
  encoder_.add(tick, inputs);
  noteTime(tick.at);
  if (encoder_.texts() > kMostTextsInOneStretch) needsBeginning_ = true;
}

void TapeWriter::add(const TapeMark& mark) {
  encoder_.add(mark);
  noteTime(mark.at);
}

void TapeWriter::add(const TapeClockSet& clockSet) {
  encoder_.add(clockSet);
  noteTime(clockSet.at);
}

void TapeWriter::flush() {
  oldest_.reset();
  const std::string frames = encoder_.take();
  if (frames.empty() || isStopped_) return;
  std::string piece = tapeBlock::packed(frames);
  if (std::exchange(needsOpening_, false)) piece.insert(0, tapeFormat::kOpening);
  bytesWritten_ += piece.size();
  const TapeOutput::Answer answer = output_.append(std::move(piece));
  isStopped_ = answer == TapeOutput::Answer::stop;
  if (answer == TapeOutput::Answer::beginAnew) needsBeginning_ = needsOpening_ = true;
}

void TapeWriter::noteTime(tidewell::Moment at) {
  if (!oldest_) oldest_ = at;
  if (at - *oldest_ >= kLongestGathering || encoder_.size() > kMostGathered) flush();
}

}  // namespace staylit

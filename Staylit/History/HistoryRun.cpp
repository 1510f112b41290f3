#include "Staylit/History/HistoryRun.h"

#include <algorithm>
#include <utility>
#include <variant>

namespace staylit {

using State = StatusReport::State;
using tidewell::WallTime;

HistoryRun::HistoryRun(const HistoryEvent& last)
    : wallTimeAtMomentZero_(last.at.time_since_epoch() - last.moment.time_since_epoch()) {}

void HistoryRun::add(const HistoryEvent& event) {
  const WallTime at(event.moment.time_since_epoch() + wallTimeAtMomentZero_);
  // A damaged line may tell of an earlier moment.
  now_ = began_ ? std::max(now_, at) : at;
  if (!began_) began_ = now_;
  std::visit([this](const auto& what) { take(what); }, event.what);
}

void HistoryRun::end(WallTime at, Ending ending) {
  now_ = at;
  hasEnded_ = true;
  endHold(ending);
  endBlock(ending);
  endWorks(ending);
  endAskings(ending);
  turn(pause_, timeline_.pauses, false, ending);
  turn(sleep_, timeline_.sleeps, false, ending);
  turn(battery_, timeline_.onBattery, false, ending);
  turn(lidClosed_, timeline_.lidClosed, false, ending);
  turn(lidHold_, timeline_.lidHolds, false, ending);
  timeline_.runs.push_back({{began_.value_or(at), at, false, ending}, version_});
}

void HistoryRun::take(const HistoryEvent::Started& started) {
  version_ = started.version;
}

void HistoryRun::take(const HistoryEvent::Stopped&) {
  end(now_, Ending::ended);
}

void HistoryRun::take(const HistoryEvent::StateChanged& changed) {
  const bool isHold = changed.state == State::holding || changed.state == State::winding;
  if (!isHold) endHold(Ending::ended);
  if (isHold && hold_) hold_->parts.back().to = now_;
  if (isHold && !hold_) hold_ = HistoryTimeline::Hold{{now_, now_}, {}};
  if (isHold) {
    hold_->parts.push_back(
        {now_, now_, changed.state, changed.reason, changed.names, changed.services});
  }
  const bool isBlock = changed.state == State::blocked;
  if (block_ && (!isBlock || block_->reason != changed.reason)) endBlock(Ending::ended);
  if (isBlock && !block_) block_ = HistoryTimeline::Block{{now_, now_}, changed.reason};
  turn(pause_, timeline_.pauses, changed.state == State::paused);
}

void HistoryRun::take(const HistoryEvent::WorkBegan& began) {
  endWork(began.key);
  works_.push_back({{now_, now_},
                    began.key,
                    began.display,
                    began.category,
                    began.overForSeconds,
                    began.figures,
                    std::nullopt,
                    std::nullopt,
                    {}});
}

void HistoryRun::take(const HistoryEvent::WorkEnded& ended) {
  if (!endWork(ended.key)) return;
  timeline_.works.back().peak = ended.peak;
  timeline_.works.back().mean = ended.mean;
}

bool HistoryRun::endWork(const std::string& key) {
  const auto work = std::ranges::find(works_, key, &HistoryTimeline::Work::key);
  if (work == works_.end()) return false;
  work->span.to = now_;
  timeline_.works.push_back(std::move(*work));
  works_.erase(work);
  return true;
}

void HistoryRun::take(const HistoryEvent::AskingChanged& changed) {
  std::vector<HistoryTimeline::Asking> next;
  for (std::size_t index = 0; index < changed.names.size(); ++index) {
    const std::string words = changed.words.empty() ? "" : changed.words[index];
    if (!changed.names[index].empty()) next.push_back({{now_, now_}, changed.names[index], words});
  }
  for (HistoryTimeline::Asking& asking : askings_) {
    const auto goesOn = std::ranges::find_if(next, [&asking](const auto& other) {
      return other.name == asking.name && other.words == asking.words;
    });
    if (goesOn != next.end()) {
      goesOn->span = asking.span;
    } else {
      asking.span.to = now_;
      timeline_.askings.push_back(std::move(asking));
    }
  }
  askings_ = std::move(next);
}

void HistoryRun::take(const HistoryEvent::PowerChanged& changed) {
  timeline_.charges.push_back({now_, changed.power});
  turn(battery_, timeline_.onBattery, changed.power.hasBattery && !changed.power.onAC);
}

void HistoryRun::take(const HistoryEvent::FellAsleep&) {
  // The program lets go of its hold before sleep, and judges afresh after it.
  endHold(Ending::ended);
  endWorks(Ending::ended);
  endAskings(Ending::ended);
  turn(sleep_, timeline_.sleeps, true);
}

void HistoryRun::take(const HistoryEvent::WokeUp&) {
  turn(sleep_, timeline_.sleeps, false);
}

void HistoryRun::take(const HistoryEvent::LidMoved& moved) {
  turn(lidClosed_, timeline_.lidClosed, moved.isClosed);
}

void HistoryRun::take(const HistoryEvent::LidHoldChanged& changed) {
  turn(lidHold_, timeline_.lidHolds, changed.isHeld);
}

void HistoryRun::take(const HistoryEvent::SettingChanged& changed) {
  timeline_.settings.push_back({now_, changed.key, changed.from, changed.to});
}

void HistoryRun::take(const HistoryEvent::ClockSet&) {
  timeline_.clockSets.push_back({now_});
}

void HistoryRun::endHold(Ending ending) {
  if (!hold_) return;
  hold_->parts.back().to = now_;
  hold_->span.to = now_;
  hold_->span.ending = ending;
  timeline_.holds.push_back(std::move(*hold_));
  hold_.reset();
}

void HistoryRun::endBlock(Ending ending) {
  if (!block_) return;
  block_->span.to = now_;
  block_->span.ending = ending;
  timeline_.blocks.push_back(std::move(*block_));
  block_.reset();
}

void HistoryRun::endWorks(Ending ending) {
  for (HistoryTimeline::Work& work : works_) {
    work.span.to = now_;
    work.span.ending = ending;
    timeline_.works.push_back(std::move(work));
  }
  works_.clear();
}

void HistoryRun::endAskings(Ending ending) {
  for (HistoryTimeline::Asking& asking : askings_) {
    asking.span.to = now_;
    asking.span.ending = ending;
    timeline_.askings.push_back(std::move(asking));
  }
  askings_.clear();
}

void HistoryRun::turn(OpenSpan& open, std::vector<HistoryTimeline::Span>& spans, bool isOn,
                      Ending ending) {
  if (isOn == open.has_value()) return;
  if (isOn) {
    open = now_;
  } else {
    spans.push_back({*open, now_, false, ending});
    open.reset();
  }
}

}  // namespace staylit

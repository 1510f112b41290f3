#include "Platform/Posix/Files/QueuedLineStore.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Tidewell/Log.h"

namespace platform {
namespace {

/// Lines that a full disk has refused, for example. They take some tens of kilobytes.
constexpr std::size_t kMostUnwrittenLines = 256;

/// Keeps a queue until the process ends, because its destructor would wait for its thread.
void leaveBehind(std::unique_ptr<tidewell::SerialQueue> queue) {
  static auto* const left = new std::vector<std::unique_ptr<tidewell::SerialQueue>>();
  left->push_back(std::move(queue));
}

}  // namespace

/// The store and its queue own it together, because either may end first.
struct QueuedLineStore::State {
  State(LineFiles lineFiles, std::string whatLines)
      : files(std::move(lineFiles)), what(std::move(whatLines)) {}

  // For the queue.
  LineFiles files;
  const std::string what;
  std::deque<std::string> unwritten;  ///< The oldest first.
  bool hasComplained = false;

  std::mutex mutex;  ///< Guards what follows.
  std::condition_variable changed;
  std::uint64_t submitted = 0;
  std::uint64_t done = 0;

  void append(const Line& line) {
    unwritten.push_back(line(files.lastWritten()));
    if (unwritten.size() > kMostUnwrittenLines) unwritten.pop_front();
    const auto why = write();
    if (why && !std::exchange(hasComplained, true)) {
      tidewell::Log::error(what + " cannot be written to " + files.folder().string() + ": " + *why);
    }
    if (!why) hasComplained = false;
  }

  std::optional<std::string> write() {
    while (!unwritten.empty()) {
      if (auto why = files.append(unwritten.front())) return why;
      unwritten.pop_front();
    }
    return std::nullopt;
  }
};

QueuedLineStore::QueuedLineStore(LineFiles files, std::string what,
                                 std::unique_ptr<tidewell::SerialQueue> queue,
                                 std::chrono::milliseconds finishTimeout)
    : finishTimeout_(finishTimeout),
      state_(std::make_shared<State>(std::move(files), std::move(what))),
      queue_(std::move(queue)) {}

QueuedLineStore::~QueuedLineStore() {
  // In this thread's table of descriptors the numbers may belong to other files.
  submit([](State& state) { state.files.close(); });
  // Destroying the queue would wait for work that may never end.
  if (!waitForWriting()) leaveBehind(std::move(queue_));
}

void QueuedLineStore::append(Line line) {
  submit([line = std::move(line)](State& state) { state.append(line); });
}

void QueuedLineStore::refresh() {
  submit([](State& state) { state.files.refresh(); });
}

void QueuedLineStore::finishWriting() {
  if (!waitForWriting()) tidewell::Log::error(state_->what + " could not be written in time");
}

void QueuedLineStore::submit(std::function<void(State&)> work) {
  {
    const std::lock_guard lock(state_->mutex);
    ++state_->submitted;
  }
  queue_->async([state = state_, work = std::move(work)] {
    work(*state);
    const std::lock_guard lock(state->mutex);
    ++state->done;
    state->changed.notify_all();
  });
}

bool QueuedLineStore::waitForWriting() {
  std::unique_lock lock(state_->mutex);
  return state_->changed.wait_for(lock, finishTimeout_,
                                  [this] { return state_->done == state_->submitted; });
}

}  // namespace platform

#include "Staylit/Replay/TapeRing.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdio>
#include <mutex>
#include <optional>
#include <utility>

#include "Staylit/Replay/TapeFormat.h"
#include "Tidewell/Log.h"
#include "Tidewell/TextReading.h"

namespace staylit {
namespace {

using Entry = tidewell::PrivateFolder::Entry;

/// So many pieces, a quarter of an hour at least, may wait for a slow disk.
constexpr int kMostWaiting = 16;
constexpr std::chrono::seconds kLongestWaitAtTheEnd{3};
constexpr std::int64_t kOldestSeconds = std::int64_t{24} * 3600;

/// So that the last piece too finds room.
constexpr std::uint64_t kFullFile = TapeRing::kLargestFile - (std::uint64_t{32} << 10);

constexpr std::string_view kNameBegin = "ring-";
constexpr std::string_view kNameEnd = ".tape";
constexpr std::size_t kDigits = 10;

std::optional<std::uint64_t> ringNumberOf(std::string_view name) {
  if (name.size() != kNameBegin.size() + kDigits + kNameEnd.size()) return std::nullopt;
  if (!name.starts_with(kNameBegin) || !name.ends_with(kNameEnd)) return std::nullopt;
  return tidewell::wholeNumber<std::uint64_t>(name.substr(kNameBegin.size(), kDigits));
}

std::string ringNameOf(std::uint64_t number) {
  const std::string digits = std::to_string(number);
  const std::size_t missing = digits.size() < kDigits ? kDigits - digits.size() : 0;
  return std::string(kNameBegin) + std::string(missing, '0') + digits + std::string(kNameEnd);
}

}  // namespace

/// What the queue works with. `waiting`, `isBroken` and what `finished`
/// tells of belong to both threads.
struct TapeRing::Shared {
  explicit Shared(std::shared_ptr<tidewell::PrivateFolder> privateFolder)
      : folder(std::move(privateFolder)) {}

  void write(const std::string& piece);
  void beginFile();
  void makeRoom(const std::vector<Entry>& entries);
  void fail(const std::string& why);

  std::shared_ptr<tidewell::PrivateFolder> folder;
  std::unique_ptr<tidewell::PrivateFile> file;  ///< Null before the first and after a failure.
  bool hasSaidSo = false;
  std::atomic<int> waiting = 0;
  std::atomic<bool> isBroken = false;  ///< Since a failure that the main thread does not know of.
  std::mutex lock;
  std::condition_variable finished;
  bool isFinished = false;
};

TapeRing::TapeRing(std::shared_ptr<tidewell::PrivateFolder> folder, tidewell::SerialQueues& queues)
    : shared_(std::make_shared<Shared>(std::move(folder))),
      queue_(queues.make("com.staylit.ring")) {}

TapeRing::~TapeRing() {
  queue_->async([shared = shared_] {
    const std::lock_guard guard(shared->lock);
    shared->isFinished = true;
    shared->finished.notify_all();
  });
  std::unique_lock lock(shared_->lock);
  shared_->finished.wait_for(lock, kLongestWaitAtTheEnd, [this] { return shared_->isFinished; });
}

TapeOutput::Answer TapeRing::append(std::string piece) {
  if (shared_->waiting >= kMostWaiting || shared_->isBroken.exchange(false)) {
    return Answer::beginAnew;
  }
  if (piece.starts_with(tapeFormat::kOpening)) size_ = 0;
  size_ += piece.size();
  ++shared_->waiting;
  queue_->async([shared = shared_, piece = std::move(piece)] {
    shared->write(piece);
    --shared->waiting;
  });
  return size_ >= kFullFile ? Answer::beginAnew : Answer::goOn;
}

std::vector<std::string> TapeRing::filesOf(const std::vector<Entry>& entries) {
  std::vector<std::string> names;
  for (const Entry& entry : entries) {
    if (ringNumberOf(entry.name)) names.push_back(entry.name);
  }
  std::ranges::sort(names);
  return names;
}

void TapeRing::Shared::write(const std::string& piece) {
  if (piece.starts_with(tapeFormat::kOpening)) beginFile();
  if (!file) return;
  const std::string error = file->append(piece);
  if (!error.empty()) fail(error);
}

void TapeRing::Shared::beginFile() {
  file.reset();
  std::vector<Entry> entries = folder->list();
  std::erase_if(entries, [](const Entry& entry) { return !ringNumberOf(entry.name); });
  std::ranges::sort(entries, {}, &Entry::name);
  const std::uint64_t last = entries.empty() ? 0 : ringNumberOf(entries.back().name).value_or(0);
  makeRoom(entries);
  tidewell::PrivateFolder::Creation creation = folder->create(ringNameOf(last + 1));
  if (!creation.file) return fail(creation.error);
  file = std::move(creation.file);
}

void TapeRing::Shared::makeRoom(const std::vector<Entry>& entries) {
  std::uint64_t size = kLargestFile;
  for (const Entry& entry : entries)
    size += entry.size;
  for (const Entry& entry : entries) {
    if (size <= kLargestInAll && entry.ageSeconds <= kOldestSeconds) continue;
    folder->remove(entry.name);
    size -= entry.size;
  }
}

void TapeRing::Shared::fail(const std::string& why) {
  file.reset();
  isBroken = true;
  if (!std::exchange(hasSaidSo, true)) {
    tidewell::Log::error("the ring of recordings cannot be written: " + why);
  }
}

}  // namespace staylit

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <thread>

#include "Platform/Linux/Files/HistoryFolder.h"
#include "Platform/Posix/Files/LineFiles.h"
#include "Platform/Posix/Files/Pipe.h"
#include "Staylit/History/HistoryReader.h"
#include "Tests/Campaign/Campaigns.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace staylit::campaign {
namespace {

using platform::LineFiles;
using std::chrono::microseconds;

/// Writers that are killed at random moments while they append events, some of them where the disk
/// is full now and then.
class HistoryKills {
 public:
  Outcome run(Effort effort) {
    const int runs = effort.quick ? 40 : 1'000;
    for (int number = 0; number < runs; ++number) {
      if (number % kRunsOfAFolder == 0) folder_.emplace();
      ++outcome_.runs;
      acknowledged_ = writeUntilKilled(number, number % 4 == 3);
      examine(number);
    }
    outcome_.measured =
        std::to_string(lines_) + " lines written, " + std::to_string(torn_) + " torn, " +
        std::to_string(unsaid_) + " whole but not yet said to be written, " +
        std::to_string(refused_) + " refused by a full disk; one line took " +
        std::to_string(lines_ > 0 ? writing_.count() / lines_ : 0) + " us on average";
    return outcome_;
  }

 private:
  static constexpr int kRunsOfAFolder = 5;

  static HistoryEvent event(int run, std::int64_t number) {
    // Lines of different lengths.
    HistoryEvent::AskingChanged asking{{"line " + std::to_string(number)}};
    for (std::int64_t count = number % 10; count > 0; --count)
      asking.names.push_back("a name that makes the line longer");
    return {tidewell::WallTime(std::chrono::hours(500'000)),
            tidewell::Moment(std::chrono::milliseconds(number)), run, asking};
  }

  [[nodiscard]] std::filesystem::path path() const { return folder_->path() / "history"; }

  [[nodiscard]] std::uintmax_t sizeOfNewest() const {
    std::filesystem::path newest;
    for (const auto& entry : std::filesystem::directory_iterator(path()))
      newest = std::max(newest, entry.path());
    return std::filesystem::file_size(newest);
  }

  /// In the child. Says through the pipe how each line fared.
  [[noreturn]] void write(int run, bool hasFullDisk, int said) const {
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, nullptr);
    // Nothing is to go because there is too much of it.
    const LineFiles::Limits limits{.files = 100'000};
    LineFiles files(path(), platform::describeError, limits, [] {
      return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    });
    std::int64_t number = 0;
    for (int round = 0;; ++round) {
      // A limit within the next lines stands for a disk that is full for a while.
      const bool isFull = hasFullDisk && round % 50 >= 45;
      const rlim_t most = isFull ? sizeOfNewest() + 100 : RLIM_INFINITY;
      const rlimit limit{most, RLIM_INFINITY};
      ::setrlimit(RLIMIT_FSIZE, &limit);
      const bool isWritten = !files.append(textOf(event(run, number)));
      if (isWritten) ++number;
      const char answer = isWritten ? 'w' : 'r';
      if (::write(said, &answer, 1) != 1) ::_exit(1);
    }
  }

  std::int64_t writeUntilKilled(int run, bool hasFullDisk) {
    platform::Pipe said = platform::Pipe::make();
    const auto began = std::chrono::steady_clock::now();
    const pid_t child = ::fork();
    if (child == 0) write(run, hasFullDisk, said.writing.get());
    said.writing.reset();
    const auto length = microseconds(std::uniform_int_distribution(0, 20'000)(random_));
    std::int64_t acknowledged = 0;
    // A pipe that is full would stop the writer.
    std::thread reader([&] {
      char answer = 0;
      while (::read(said.reading.get(), &answer, 1) == 1)
        ++(answer == 'w' ? acknowledged : refused_);
    });
    std::this_thread::sleep_for(length);
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    reader.join();
    writing_ += std::chrono::duration_cast<microseconds>(std::chrono::steady_clock::now() - began);
    return acknowledged;
  }

  void examine(int run) {
    const auto content = LineFiles::read(path(), platform::describeError);
    const History history = historyIn({content.text, content.lastWritten, content.isInUse}, {});
    expected_[run] = acknowledged_;
    std::map<std::int64_t, std::int64_t> next;
    for (const HistoryEvent& read : history.events) {
      const int ofRun = static_cast<int>(read.run);
      // What the disk had no room for may lack no more than its line feed, and is written again.
      const bool isAgain = next[ofRun] > 0 && read == event(ofRun, next[ofRun] - 1);
      if (isAgain) continue;
      if (read != event(ofRun, next[ofRun])) {
        return find(run, "an event is missing, or is not what was written");
      }
      ++next[read.run];
    }
    const std::int64_t found = next[run];
    if (found < acknowledged_ || found > acknowledged_ + 1) {
      find(run, std::to_string(acknowledged_) + " events were written, and " +
                    std::to_string(found) + " are there");
    }
    expected_[run] = found;
    unsaid_ += found - acknowledged_;
    lines_ += found;
    const int first = run / kRunsOfAFolder * kRunsOfAFolder;
    for (int earlier = first; earlier < run; ++earlier) {
      if (next[earlier] != expected_[earlier]) find(run, "events of an earlier run are gone");
    }
    if (content.isInUse) find(run, "the folder is in use by nobody");
    countTorn(run, content.text, history.events.size());
  }

  void countTorn(int run, const std::string& text, std::size_t events) {
    std::size_t lines = 0;
    for (std::size_t from = 0; from < text.size();) {
      const std::size_t end = std::min(text.find('\n', from), text.size());
      lines += end > from ? 1 : 0;
      from = end + 1;
    }
    const auto tornHere = static_cast<std::int64_t>(lines - events);
    torn_ += std::max<std::int64_t>(0, tornHere - tornBefore_);
    tornBefore_ = run % kRunsOfAFolder == kRunsOfAFolder - 1 ? 0 : tornHere;
  }

  void find(int run, const std::string& what) {
    outcome_.findings.push_back("after the kill " + std::to_string(run) + ": " + what);
  }

  Outcome outcome_;
  std::optional<platform::testing::TemporaryFolder> folder_;
  std::mt19937 random_{1};
  std::map<int, std::int64_t> expected_;
  std::int64_t acknowledged_ = 0;
  std::int64_t lines_ = 0;
  std::int64_t torn_ = 0;
  std::int64_t tornBefore_ = 0;
  std::int64_t unsaid_ = 0;
  std::int64_t refused_ = 0;
  microseconds writing_{0};
};

}  // namespace

Outcome historyKills(Effort effort) {
  return HistoryKills().run(effort);
}

}  // namespace staylit::campaign

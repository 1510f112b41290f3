#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <thread>

#include "Platform/Linux/Settings/SettingsText.h"
#include "Platform/Linux/Settings/TomlDefaults.h"
#include "Tests/Campaign/Campaigns.h"
#include "Tests/Fakes/FakeSystemLog.h"
#include "Tests/Platform/Support/TemporaryFolder.h"
#include "Tidewell/Ports/Ports.h"

namespace staylit::campaign {
namespace {

namespace fs = std::filesystem;
using platform::SettingsValues;
using platform::TomlDefaults;

/// A process that sets one key to ever higher numbers, and tells each number that it has saved.
class SettingsWriter {
 public:
  SettingsWriter(const fs::path& file, const std::string& key, std::int64_t from, std::int64_t to) {
    if (::pipe2(ends_, O_CLOEXEC) != 0) return;
    pid_ = ::fork();
    if (pid_ == 0) write(file, key, from, to);
    ::close(ends_[1]);
  }
  ~SettingsWriter() {
    kill(SIGKILL);
    ::close(ends_[0]);
  }
  SettingsWriter(const SettingsWriter&) = delete;
  SettingsWriter& operator=(const SettingsWriter&) = delete;

  void kill(int signal) {
    if (pid_ <= 0) return;
    if (signal != 0) ::kill(pid_, signal);
    ::waitpid(pid_, nullptr, 0);
    pid_ = -1;
  }

  /// Waits for the writer to save its first number.
  void waitForOne() { receive(); }
  /// The last number that the writer has saved. Call it once the writer has ended.
  std::int64_t lastSaved() {
    while (receive()) {
    }
    return last_;
  }

 private:
  bool receive() { return ::read(ends_[0], &last_, sizeof last_) == sizeof last_; }

  [[noreturn]] void write(const fs::path& file, const std::string& key, std::int64_t from,
                          std::int64_t to) const {
    tidewell::Ports ports;
    ports.log = std::make_shared<tidewell::FakeSystemLog>();
    const tidewell::InstalledPorts installed(ports);
    platform::SettingsKeeper::Timing timing;
    timing.writePause = std::chrono::milliseconds(0);
    timing.firstReadTimeout = timing.readTimeout = timing.finishTimeout = std::chrono::minutes(1);
    TomlDefaults defaults(file, timing);
    for (std::int64_t number = from; number <= to; ++number) {
      defaults.setInteger(key, number);
      defaults.finishWriting();
      if (::write(ends_[1], &number, sizeof number) < 0) break;
    }
    ::_exit(0);
  }

  int ends_[2] = {-1, -1};
  pid_t pid_ = -1;
  std::int64_t last_ = 0;
};

/// Does something to one settings file in each round.
class SettingsFileRounds {
 public:
  SettingsFileRounds() { std::ofstream(file()) << kText; }

  Outcome run(Effort effort) {
    const auto end = std::chrono::steady_clock::now() + kQuickTime;
    for (std::int64_t round = 1; round <= (effort.quick ? kQuickRounds : kRounds); ++round) {
      if (effort.quick && std::chrono::steady_clock::now() > end) break;
      switch (round % 3) {
        case 0:
          killWhileWriting(round);
          break;
        case 1:
          letTwoWrite(round);
          break;
        default:
          editBetween(round);
      }
      removeLeftOvers();
      ++outcome_.runs;
    }
    outcome_.measured = std::to_string(killed_) + " killed, " + std::to_string(leftOver_) +
                        " temporary files left over, " + std::to_string(edits_) + " edits";
    return outcome_;
  }

 private:
  static constexpr std::int64_t kRounds = 10'000;
  static constexpr std::int64_t kQuickRounds = 400;
  static constexpr auto kQuickTime = std::chrono::seconds(12);
  static constexpr const char* kText =
      "# mine\nkept = 'as it is' # too\nfirst = 0\nsecond = 0\nhand = 0\n";

  [[nodiscard]] fs::path file() const { return folder_.path() / "settings.toml"; }

  void killWhileWriting(std::int64_t round) {
    const std::int64_t before = number("first", round);
    SettingsWriter writer(file(), "first", before + 1, before + 1'000'000);
    writer.waitForOne();
    pause(8'000);
    writer.kill(SIGKILL);
    ++killed_;
    const std::int64_t saved = writer.lastSaved();
    const std::int64_t found = number("first", round);
    if (found < saved || found > saved + 1) {
      find(round, "a killed writer had saved " + std::to_string(saved) + ", the file says " +
                      std::to_string(found));
    }
  }

  void letTwoWrite(std::int64_t round) {
    const std::int64_t first = number("first", round) + 3;
    const std::int64_t second = number("second", round) + 3;
    {
      SettingsWriter one(file(), "first", first - 2, first);
      SettingsWriter other(file(), "second", second - 2, second);
      one.kill(0);
      other.kill(0);
    }
    if (number("first", round) != first) find(round, "of two writers the first was overwritten");
    if (number("second", round) != second) find(round, "of two writers the second was overwritten");
  }

  void editBetween(std::int64_t round) {
    const std::int64_t before = number("second", round);
    std::string how;
    {
      SettingsWriter writer(file(), "second", before + 1, before + 4);
      pause(12'000);
      how = edit(round);
      writer.kill(0);
    }
    ++edits_;
    if (number("hand", round) != round) find(round, "an edit " + how + " was lost");
  }

  /// Edits the file as a person does, in one of two ways, and returns a description of the way.
  std::string edit(std::int64_t round) {
    std::string text = read();
    const std::size_t begin = text.find("hand = ");
    if (begin == std::string::npos) return "of a file without its line";
    const std::size_t end = text.find('\n', begin);
    text.replace(begin, end - begin, "hand = " + std::to_string(round));
    if (round % 2 == 0) {
      std::ofstream(folder_.path() / "edited") << text;
      fs::rename(folder_.path() / "edited", file());
      return "by a new file in the old one's place";
    }
    std::ofstream(file()) << text;
    return "within the file";
  }

  /// The number under `key` in the file. Also checks that everything else is as it was.
  std::int64_t number(const std::string& key, std::int64_t round) {
    const std::string text = read();
    const SettingsValues settings = platform::parseSettings(text);
    if (!settings.damage.empty()) find(round, "the file is damaged: " + settings.damage);
    if (!text.starts_with("# mine\nkept = 'as it is' # too\n"))
      find(round, "what nobody has changed is gone");
    const auto found = settings.values.find(key);
    const auto* value =
        found == settings.values.end() ? nullptr : std::get_if<std::int64_t>(&found->second);
    return value != nullptr ? *value : -1;
  }

  [[nodiscard]] std::string read() const {
    std::ostringstream text;
    text << std::ifstream(file(), std::ios::binary).rdbuf();
    return text.str();
  }

  void removeLeftOvers() {
    for (const auto& entry : fs::directory_iterator(folder_.path())) {
      if (entry.path().filename() == "settings.toml") continue;
      fs::remove(entry.path());
      ++leftOver_;
    }
  }

  void pause(int mostMicroseconds) {
    std::uniform_int_distribution<int> distribution(0, mostMicroseconds);
    std::this_thread::sleep_for(std::chrono::microseconds(distribution(random_)));
  }

  void find(std::int64_t round, const std::string& what) {
    outcome_.findings.push_back("round " + std::to_string(round) + ": " + what);
  }

  platform::testing::TemporaryFolder folder_;
  Outcome outcome_;
  std::mt19937 random_{1};
  std::int64_t killed_ = 0;
  std::int64_t leftOver_ = 0;
  std::int64_t edits_ = 0;
};

}  // namespace

Outcome settingsFiles(Effort effort) {
  return SettingsFileRounds().run(effort);
}

}  // namespace staylit::campaign

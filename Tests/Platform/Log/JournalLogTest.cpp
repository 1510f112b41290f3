#include "Platform/Linux/Log/JournalLog.h"

#include <gtest/gtest.h>
#include <regex>

#include "Tests/Platform/ChildProcess.h"
#include "Tests/Platform/Log/PrivateJournal.h"

namespace platform {
namespace {

using tidewell::LogType;

constexpr char kNotPermitted[] = "no private mount namespace";

/// Runs `body` in a child with a `/run` of its own, in which no journal listens at first, and
/// returns its result.
std::string withoutJournal(const std::function<std::string()>& body) {
  return inChild([&body] { return PrivateJournal::hideRun() ? body() : kNotPermitted; });
}

/// Redirects this process's standard error, so that the test can read it.
class StandardError {
 public:
  StandardError() {
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    reader_ = Descriptor(ends[0]);
    fcntl(reader_.get(), F_SETFL, O_NONBLOCK);
    dup2(ends[1], STDERR_FILENO);
    close(ends[1]);
  }
  std::string read() {
    char buffer[65536];
    const ssize_t size = ::read(reader_.get(), buffer, sizeof buffer);
    return size < 0 ? "" : std::string(buffer, static_cast<std::size_t>(size));
  }
  void stopReading() { reader_.reset(); }

 private:
  Descriptor reader_;
};

std::shared_ptr<tidewell::SystemLogger> makeLogger() {
  return JournalLog().makeLogger("com.staylit.app", "core");
}

std::string joined(const PrivateJournal::Fields& fields) {
  std::string text;
  for (const auto& [name, value] : fields)
    text += name + "=" + value + "\n";
  return text;
}

/// The fields of the entry that `message` makes, one in each line.
std::string entryOf(LogType type, const std::string& message) {
  return withoutJournal([&]() -> std::string {
    PrivateJournal journal;
    if (!journal.listens()) return "no socket";
    StandardError standardError;
    makeLogger()->emit(type, message);
    return joined(journal.receive()) + standardError.read();
  });
}

#define SKIP_UNLESS_PERMITTED(result) \
  if ((result) == kNotPermitted) GTEST_SKIP() << "this process may not make mount namespaces"

TEST(JournalLog, SendsAnInfoWithItsFieldsButNoPlaceInTheCode) {
  const std::string entry = entryOf(LogType::info, "Staylit started");
  SKIP_UNLESS_PERMITTED(entry);
  EXPECT_EQ(entry,
            "CATEGORY=core\nMESSAGE=Staylit started\nPRIORITY=6\n"
            "SUBSYSTEM=com.staylit.app\nSYSLOG_IDENTIFIER=" +
                std::string(program_invocation_short_name) + "\n");
}

TEST(JournalLog, SendsAnErrorWithItsPriority) {
  const std::string entry = entryOf(LogType::error, "it failed");
  SKIP_UNLESS_PERMITTED(entry);
  EXPECT_NE(entry.find("MESSAGE=it failed\nPRIORITY=3\n"), std::string::npos) << entry;
}

TEST(JournalLog, SendsAMessageLiterally) {
  const std::string entry = entryOf(LogType::info, "100 %s %n\nand a second line = é");
  SKIP_UNLESS_PERMITTED(entry);
  EXPECT_NE(entry.find("MESSAGE=100 %s %n\nand a second line = é\nPRIORITY"), std::string::npos)
      << entry;
}

TEST(JournalLog, SendsAnEmptyMessage) {
  const std::string entry = entryOf(LogType::info, "");
  SKIP_UNLESS_PERMITTED(entry);
  EXPECT_NE(entry.find("MESSAGE=\n"), std::string::npos) << entry;
}

/// The line without the date and the time before it; all of it where it has none.
std::string withoutTime(const std::string& line) {
  static const std::regex kTime("^[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} ");
  return std::regex_replace(line, kTime, "", std::regex_constants::format_first_only);
}

TEST(JournalLog, WritesToStandardErrorWhenNoJournalListens) {
  const std::string result = withoutJournal([] {
    StandardError standardError;
    makeLogger()->emit(LogType::info, "hello %s");
    return standardError.read();
  });
  SKIP_UNLESS_PERMITTED(result);
  EXPECT_EQ(withoutTime(result), "com.staylit.app [core] hello %s\n");
  EXPECT_NE(withoutTime(result), result);
}

TEST(JournalLog, WritesToStandardErrorWhenTheJournalIsGone) {
  const std::string result = withoutJournal([] {
    { const PrivateJournal ended; }  // The socket's file stays behind.
    StandardError standardError;
    makeLogger()->emit(LogType::error, "hello");
    return standardError.read();
  });
  SKIP_UNLESS_PERMITTED(result);
  EXPECT_EQ(withoutTime(result), "com.staylit.app [core] hello\n");
}

TEST(JournalLog, DoesNotWaitForAJournalThatHangs) {
  const std::string result = withoutJournal([]() -> std::string {
    const PrivateJournal hanging;
    StandardError standardError;
    const auto logger = makeLogger();
    for (int message = 0; message < 100000; ++message) {
      logger->emit(LogType::info, "hello");
      const std::string fallback = standardError.read();
      if (!fallback.empty()) return fallback;
    }
    return "the journal's queue never filled";
  });
  SKIP_UNLESS_PERMITTED(result);
  EXPECT_EQ(withoutTime(result), "com.staylit.app [core] hello\n");
}

TEST(JournalLog, DoesNotWaitForAReaderOfStandardError) {
  const std::string result = withoutJournal([]() -> std::string {
    StandardError standardError;
    const auto logger = makeLogger();
    logger->emit(LogType::info, std::string(1 << 20, 'x'));
    return "went on";
  });
  SKIP_UNLESS_PERMITTED(result);
  EXPECT_EQ(result, "went on");
}

TEST(JournalLog, SurvivesAStandardErrorThatNobodyReads) {
  const std::string result = withoutJournal([]() -> std::string {
    StandardError standardError;
    standardError.stopReading();
    makeLogger()->emit(LogType::info, "hello");
    close(STDERR_FILENO);
    makeLogger()->emit(LogType::info, "hello");
    return "went on";
  });
  SKIP_UNLESS_PERMITTED(result);
  EXPECT_EQ(result, "went on");
}

TEST(JournalLog, AcceptsEveryType) {
  EXPECT_TRUE(makeLogger()->isEnabled(LogType::info));
  EXPECT_TRUE(makeLogger()->isEnabled(LogType::error));
}

}  // namespace
}  // namespace platform

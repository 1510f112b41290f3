#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "Tests/EndToEnd/Machine.h"

namespace staylit::testing {
namespace {

using namespace std::chrono_literals;

/// Short times, and thresholds of which processor time alone is reached.
constexpr const char* kSettingsOfRecordings =
    "graceSeconds = 30\n"
    "sustainSeconds = 1\n"
    "diskThresholdKBps = 1e9\n"
    "netThresholdKBps = 1e9\n"
    "cpuThresholdPercent = 2\n";

class RecordTest : public Machine {
 protected:
  void SetUp() override {
    Machine::SetUp();
    writeSettings(kSettingsOfRecordings);
  }

  [[nodiscard]] std::string tape() const { return (folder.path() / "work.tape").string(); }

  /// Starts a Staylit, waits until it holds for this work, and ends the recording, which has seen
  /// the same by then or will not.
  void recordWhileHeldFor(const ChildProgram& recorder, const std::string& work) {
    const ChildProgram staylit = start();
    ASSERT_TRUE(eventually([&] { return holdReason() == work + " is working"; }, 60s));
    EXPECT_EQ(holdReasons().size(), 1U) << "the recording holds nothing";
    ::kill(recorder.pid(), SIGTERM);
    EXPECT_EQ(wait(recorder), 0) << output("err");
  }

  std::string replayed(std::vector<std::string> options, int status = 0) {
    options.insert(options.begin(), "--replay");
    EXPECT_EQ(wait(start(options)), status) << output("err");
    return output();
  }
};

TEST_F(RecordTest, RecordsLiveWorkAndDecidesTheSameAgain) {
  const ChildProgram recorder = start({"--record", tape()});
  const ChildProgram worker = workAs("aider", {"cpu"});
  recordWhileHeldFor(recorder, "Aider");
  const std::string report = replayed({tape()});
  EXPECT_NE(report.find("As recorded, a replay decides the same at each of "), std::string::npos)
      << report;
  EXPECT_NE(report.find("\nHeld for "), std::string::npos) << report;
  EXPECT_NE(report.find("Aider is working"), std::string::npos) << report;
  EXPECT_NE(report.find("  Staylit ended\n"), std::string::npos) << report;
  const std::string other = replayed({tape(), "--set", "ignoredApps=[\"aider\"]"});
  EXPECT_NE(other.find("With ignoredApps = [\"aider\"]:\nHeld for "), std::string::npos) << other;
  EXPECT_EQ(other.find("Aider is working"), std::string::npos) << other;
  EXPECT_NE(other.find("With ignoredApps = [\"aider\"] it would have been held for "),
            std::string::npos)
      << other;
}

TEST_F(RecordTest, WritesAFileOfTheUsersOwnAndNeverOverAnother) {
  const ChildProgram recorder = start({"--record", tape(), "--anonymous"});
  const ChildProgram worker = workAs("secret-project", {"cpu"});
  recordWhileHeldFor(recorder, "secret-project");
  struct stat status {};
  ASSERT_EQ(::stat(tape().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
  EXPECT_EQ(wait(start({"--record", tape()})), 2);
  EXPECT_EQ(output("err"), "staylit: " + tape() + ": File exists\n");
  const std::string object = replayed({tape(), "--set", "sustainSeconds=1", "--json"});
  EXPECT_EQ(object.find("ecret"), std::string::npos) << object;
  EXPECT_NE(object.find(R"("reason":"app-)"), std::string::npos) << object;
}

TEST_F(RecordTest, KeepsTheLastDayAndLosesOnlyALittleWhenItIsKilled) {
  writeSettings(std::string(kSettingsOfRecordings) + "[history]\nring = true\n");
  ChildProgram staylit = start();
  const ChildProgram worker = workAs("aider", {"cpu"});
  ASSERT_TRUE(eventually([this] { return holdReason() == "Aider is working"; }, 60s));
  // What is kept is written once a minute.
  const std::filesystem::path ring = folder.path() / "state/staylit/ring/ring-0000000001.tape";
  ASSERT_TRUE(eventually(
      [&ring] {
        std::error_code error;
        return std::filesystem::file_size(ring, error) > 0 && !error;
      },
      180s));
  staylit.kill();
  const std::string report = replayed({});
  EXPECT_NE(report.find("As recorded, a replay decides the same at each of "), std::string::npos)
      << report;
  EXPECT_NE(report.find("Aider is working"), std::string::npos) << report;
  EXPECT_EQ(report.find("Staylit ended"), std::string::npos) << "nobody knows it\n" << report;
  EXPECT_EQ(wait(start({"--record", tape(), "--ring", "--anonymous"})), 0) << output("err");
  EXPECT_NE(replayed({tape()}).find("; names are made up"), std::string::npos);
}

TEST_F(RecordTest, SaysWhatIsNoRecording) {
  folder.write("notes", "something else");
  const std::string notes = (folder.path() / "notes").string();
  EXPECT_EQ(wait(start({"--replay", notes})), 2);
  EXPECT_EQ(output("err"), "staylit: " + notes + " is no recording of Staylit\n");
  EXPECT_EQ(wait(start({"--replay"})), 2);
  EXPECT_TRUE(output("err").starts_with("staylit: the ring has nothing"));
  EXPECT_EQ(wait(start({"--replay", notes, "--set", "x=1"})), 2);
  EXPECT_EQ(output("err"), "staylit: there is no setting \"x\"\n");
}

}  // namespace
}  // namespace staylit::testing

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "Staylit/JsonValue.h"
#include "Tests/EndToEnd/Machine.h"

namespace staylit::testing {
namespace {

using namespace std::chrono_literals;

constexpr const char* kHistorySettings =
    "graceSeconds = 30\n"
    "sustainSeconds = 1\n"
    "diskThresholdKBps = 1e9\n"
    "netThresholdKBps = 1e9\n"
    "cpuThresholdPercent = 2\n";

class HistoryTest : public Machine {
 protected:
  /// With which status `staylit --history` ends; what it printed is in `output()`.
  int history(std::vector<std::string> options = {}) {
    options.insert(options.begin(), "--history");
    return wait(start(options));
  }
  /// The whole history.
  JsonValue json() {
    history({"--json", "--since", "2d"});
    return JsonValue::read(output().substr(0, output().find('\n'))).value_or(JsonValue());
  }
  static const JsonValue::List& list(const JsonValue& object, const char* key) {
    static const JsonValue::List nothing;
    const JsonValue* member = object.member(key);
    return member && member->list() ? *member->list() : nothing;
  }
  static std::string text(const JsonValue& object, const char* key) {
    const JsonValue* member = object.member(key);
    return member && member->text() ? *member->text() : "";
  }
  /// Whether a hold has this reason and ended in this way.
  static bool hasHold(const JsonValue& history, const std::string& reason,
                      const std::string& ending) {
    return std::ranges::any_of(list(history, "holds"), [&](const JsonValue& hold) {
      return text(hold, "ending") == ending &&
             std::ranges::any_of(list(hold, "parts"), [&](const JsonValue& part) {
               return text(part, "reason") == reason && !list(part, "services").empty();
             });
    });
  }
  void isHeldFor(const std::string& reason) {
    ASSERT_TRUE(eventually([&] { return holdReason() == reason; }, 60s)) << holdReason();
  }
};

TEST_F(HistoryTest, SaysThatThereIsNone) {
  EXPECT_EQ(history(), 1);
  EXPECT_TRUE(output().starts_with("There is no history in ")) << output();
  EXPECT_EQ(history({"--since", "soon"}), 2);
  EXPECT_NE(output("err").find("does not understand \"soon\""), std::string::npos);
}

TEST_F(HistoryTest, HasTheHoldWhileItGoesOnAndAfterIt) {
  writeSettings(kHistorySettings);
  ChildProgram worker = workAs("aider", {"cpu"});
  const ChildProgram staylit = start();
  isHeldFor("Aider is working");
  ASSERT_TRUE(eventually([this] { return hasHold(json(), "Aider is working", "open"); }, 20s));
  worker.kill();
  ASSERT_TRUE(eventually(
      [this] {
        return !list(json(), "works").empty() &&
               text(list(json(), "works")[0], "ending") == "ended";
      },
      30s))
      << output();
  kill(staylit.pid(), SIGTERM);
  wait(staylit);
  const JsonValue after = json();
  EXPECT_TRUE(hasHold(after, "Aider is working", "ended")) << output();
  EXPECT_EQ(text(list(after, "works").at(0), "name"), "Aider");
  EXPECT_EQ(list(after, "runs").size(), 1U);
  EXPECT_EQ(text(list(after, "runs").at(0), "ending"), "ended");
  EXPECT_EQ(history({"--since", "yesterday"}), 0);
  EXPECT_NE(output().find("Aider"), std::string::npos) << output();
}

TEST_F(HistoryTest, HasTheHoldOfAProgramThatWasKilled) {
  writeSettings(kHistorySettings);
  const ChildProgram worker = workAs("aider", {"cpu"});
  ChildProgram staylit = start();
  isHeldFor("Aider is working");
  ASSERT_TRUE(eventually([this] { return hasHold(json(), "Aider is working", "open"); }, 20s));
  staylit.kill();
  EXPECT_TRUE(hasHold(json(), "Aider is working", "lost")) << output();
  const ChildProgram second = start();
  ASSERT_TRUE(eventually([this] { return list(json(), "runs").size() == 2; }, 20s));
  EXPECT_TRUE(hasHold(json(), "Aider is working", "lost")) << output();
}

TEST_F(HistoryTest, IsNotKeptWhereItIsSwitchedOff) {
  writeSettings(std::string(kHistorySettings) + "[history]\nenabled = false\n");
  const ChildProgram staylit = start();
  ASSERT_TRUE(eventually([this] { return !holdReason().empty(); }, 20s));
  kill(staylit.pid(), SIGTERM);
  wait(staylit);
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "state"));
  EXPECT_EQ(history(), 1);
  EXPECT_NE(output("err").find("switched off"), std::string::npos);
}

}  // namespace
}  // namespace staylit::testing

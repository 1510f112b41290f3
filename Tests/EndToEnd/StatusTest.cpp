#include <chrono>
#include <csignal>
#include <string>
#include <vector>

#include "Tests/EndToEnd/Machine.h"

namespace staylit::testing {
namespace {

using namespace std::chrono_literals;

/// Short times, and thresholds of which processor time alone is reached.
constexpr const char* kSettings =
    "graceSeconds = 30\n"
    "sustainSeconds = 1\n"
    "diskThresholdKBps = 1e9\n"
    "netThresholdKBps = 1e9\n"
    "cpuThresholdPercent = 2\n";

class StatusTest : public Machine {
 protected:
  /// With which status `staylit --status` ends; what it printed is in `output()`.
  int status(std::vector<std::string> options = {}) {
    options.insert(options.begin(), "--status");
    return wait(start(options));
  }

  /// Whether a real parser finds `condition` to hold for each line of the output, of which there
  /// is at least one; each is the object `r`.
  bool eachLineSays(const std::string& condition, const std::string& file = "out") {
    const std::string program =
        "import json,sys\n"
        "lines=open(sys.argv[1],encoding='utf-8',errors='strict').read().splitlines()\n"
        "assert lines\n"
        "for line in lines:\n"
        "  r=json.loads(line)\n"
        "  assert " +
        condition + ", line\n";
    return wait(ChildProgram({"python3", "-c", program, (folder.path() / file).string()})) == 0;
  }

  /// Follows the status into a file of its own.
  ChildProgram startFollower() {
    const std::string file = folder.path() / "followed";
    return ChildProgram(
        {"sh", "-c",
         "exec " + std::string(STAYLIT_PROGRAM) + " --status --follow --json >" + file});
  }
  /// Waits until the follower has told of these states, in this order; there may be others between
  /// them.
  bool haveCome(const std::vector<std::string>& states) {
    return eventually(
        [&] {
          const std::string told = output("followed");
          std::size_t at = 0;
          for (const std::string& state : states) {
            at = told.find("\"state\":\"" + state + "\"", at);
            if (at == std::string::npos) return false;
            ++at;
          }
          return true;
        },
        60s);
  }
};

TEST_F(StatusTest, SaysThatNoneRuns) {
  EXPECT_EQ(status(), 3);
  EXPECT_EQ(output(), "Staylit does not run\n");
  EXPECT_TRUE(holdReasons().empty()) << "it starts none";
}

TEST_F(StatusTest, SaysWhatIsHeldAndByWhom) {
  writeSettings(kSettings);
  const ChildProgram worker = workAs("aider", {"cpu"});
  const ChildProgram staylit = start();
  ASSERT_TRUE(eventually([this] { return holdReason() == "Aider is working"; }, 60s));
  EXPECT_EQ(status(), 0);
  const std::string report = output();
  EXPECT_TRUE(report.starts_with("Awake for Aider\nSince:      ")) << report;
  for (const char* part :
       {"\nReason:     Aider is working\n", "\nHeld by:    org.freedesktop.login1 (",
        "\nStaying awake for (1):\n", "\n  Aider \u2014 ", "% CPU"}) {
    EXPECT_NE(report.find(part), std::string::npos) << part << report;
  }
  EXPECT_EQ(holdReasons().size(), 1U) << "asking holds nothing";
}

TEST_F(StatusTest, SaysWhenTheListOfTheServiceWasReadBack) {
  const ChildProgram staylit = start();
  ASSERT_TRUE(eventually([this] { return !holdReason().empty(); }, 20s));
  EXPECT_EQ(status(), 0);
  EXPECT_NE(output().find("org.freedesktop.login1 (not read back yet)"), std::string::npos)
      << output();
  EXPECT_TRUE(eventually(
      [this] {
        status();
        return output().find("org.freedesktop.login1 (read back at ") != std::string::npos;
      },
      30s))
      << output();
}

TEST_F(StatusTest, TellsProgramsInAFormThatARealParserReads) {
  if (!platform::testing::isInstalled("python3")) GTEST_SKIP() << "python3 is not installed";
  EXPECT_EQ(status({"--json"}), 3);
  EXPECT_TRUE(
      eachLineSays("r=={'version':1,'state':'absent','held':False,'summary':'Staylit does "
                   "not run'}"));
  writeSettings(kSettings);
  const ChildProgram worker = workAs("we\"ird\\ \u00FC", {"cpu"});
  const ChildProgram staylit = start();
  ASSERT_TRUE(eventually([this] { return holdReason() == "we\"ird\\ \u00FC is working"; }, 60s))
      << holdReason();
  EXPECT_EQ(status({"--json"}), 0);
  EXPECT_TRUE(eachLineSays("r['state']=='holding' and r['held'] is True and r['version']==1"));
  EXPECT_TRUE(eachLineSays("r['names']==['we\"ird\\\\ \u00FC']"));
  EXPECT_TRUE(eachLineSays("r['busy'][0]['id']=='we\"ird\\\\ \u00FC'"));
  EXPECT_TRUE(eachLineSays("r['busy'][0]['cpuPercent']>=2 and r['busy'][0]['busyForSeconds']>=1"));
  EXPECT_TRUE(eachLineSays("r['services'][0]['name']=='org.freedesktop.login1'"));
  EXPECT_TRUE(eachLineSays("r['power']['onAC'] in (True,False)"));
  EXPECT_TRUE(eachLineSays("r['since'].endswith('Z') and r['forSeconds']>=0"));
}

TEST_F(StatusTest, FollowsThroughWorkAKillAndTheNextStart) {
  if (!platform::testing::isInstalled("python3")) GTEST_SKIP() << "python3 is not installed";
  writeSettings(kSettings);
  const ChildProgram follower = startFollower();
  ASSERT_TRUE(haveCome({"absent"}));
  ChildProgram staylit = start();
  ASSERT_TRUE(haveCome({"absent", "winding"}));
  const ChildProgram worker = workAs("aider", {"cpu"});
  ASSERT_TRUE(haveCome({"absent", "winding", "holding"}));
  staylit.kill();
  ASSERT_TRUE(haveCome({"absent", "winding", "holding", "absent"}));
  staylit = start();
  ASSERT_TRUE(haveCome({"absent", "winding", "holding", "absent", "winding", "holding"}));
  ::kill(follower.pid(), SIGINT);
  EXPECT_EQ(wait(follower), 0) << "the machine was held last";
  EXPECT_TRUE(eachLineSays("r['version']==1 and r['summary']", "followed"));
}

TEST_F(StatusTest, StopsFollowingWhenNobodyReadsAnyMore) {
  const ChildProgram staylit = start();
  ASSERT_TRUE(eventually([this] { return !holdReason().empty(); }, 20s));
  const ChildProgram pipeline({"sh", "-c",
                               std::string(STAYLIT_PROGRAM) + " --status --follow | head -n 1 >" +
                                   (folder.path() / "first").string()});
  EXPECT_EQ(wait(pipeline), 0);
  EXPECT_NE(output("first").find("  Work stopped \u2014 releasing in "), std::string::npos);
}

TEST_F(StatusTest, EndsInTroubleWhenTheAnswerCannotBeWritten) {
  const std::string errors = folder.path() / "errors";
  for (const std::string option : {"--status", "--status --follow", "--holds", "--doctor"}) {
    const ChildProgram staylit(
        {"sh", "-c",
         "exec " + std::string(STAYLIT_PROGRAM) + " " + option + " >/dev/full 2>" + errors});
    EXPECT_EQ(wait(staylit), 2) << option;
    EXPECT_EQ(output("errors"), "staylit: the answer cannot be written: No space left on device\n")
        << option;
  }
}

TEST_F(StatusTest, WritesOnlyAsciiWhereTheLocaleHasNoMore) {
  const ScopedEnvironment plain("LC_ALL", "C");
  const ChildProgram staylit = start();
  ASSERT_TRUE(eventually([this] { return !holdReason().empty(); }, 20s));
  EXPECT_EQ(status(), 0);
  EXPECT_TRUE(output().starts_with("Work stopped - releasing in ")) << output();
}

TEST_F(StatusTest, TakesNoOffenceAtAReaderThatReadsNothing) {
  const std::string errors = folder.path() / "errors";
  const ChildProgram staylit(
      {"bash", "-c",
       std::string(STAYLIT_PROGRAM) + " --holds 2>" + errors + " | true; exit ${PIPESTATUS[0]}"});
  EXPECT_EQ(wait(staylit), 1) << "nothing is held, and that is said";
  EXPECT_EQ(output("errors"), "");
}

}  // namespace
}  // namespace staylit::testing

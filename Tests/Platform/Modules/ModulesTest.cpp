#include "Platform/Linux/Modules/Modules.h"

#include <gtest/gtest.h>

#include <string>

#include "Platform/Linux/Text/UnicodeModule.h"
#include "Tests/Fakes/FakePorts.h"

namespace platform {
namespace {

constexpr const char* kOwn = "libmodule-of-this-build.so";
constexpr const char* kOther = "libmodule-of-another-build.so";

class ModulesTest : public ::testing::Test {
 protected:
  /// The only line of the log.
  std::string logged() {
    const auto& records = ports.log.records();
    return records.size() == 1 ? records.front().message : std::to_string(records.size());
  }
  tidewell::FakePorts ports;
};

TEST_F(ModulesTest, LoadsAModuleOfTheSameBuild) {
  const ModuleFunction number = loadFromModule(kOwn, "staylitTestNumber");
  ASSERT_NE(number.address, nullptr);
  EXPECT_EQ(reinterpret_cast<int (*)()>(number.address)(), 42);
  EXPECT_EQ(logged(), "0");
}

TEST_F(ModulesTest, RefusesAModuleOfAnotherBuildWhateverItOffers) {
  for (const char* function : {"staylitTestNumber", "staylitMakeWindowKit", "staylitMakeText"}) {
    const ModuleFunction found = loadFromModule(kOther, function);
    EXPECT_EQ(found.address, nullptr) << function;
    EXPECT_TRUE(found.isOfAnotherBuild) << function;
  }
  EXPECT_EQ(ports.log.records().front().message,
            "cannot load libmodule-of-another-build.so: it is of another build than the program");
}

TEST_F(ModulesTest, TellsAMissingModuleFromOneOfAnotherBuild) {
  const ModuleFunction found = loadFromModule("libstaylit-nothing.so", "staylitTestNumber");
  EXPECT_EQ(found.address, nullptr);
  EXPECT_FALSE(found.isOfAnotherBuild);
  EXPECT_EQ(logged(), "cannot load libstaylit-nothing.so: no such file");
  EXPECT_EQ(found.why, "cannot load libstaylit-nothing.so: no such file");
}

}  // namespace
}  // namespace platform

// Every test begins with an untouched system and fails when it leaves anything unpaid.

#include <gtest/gtest.h>

#include <string>

#include "Tests/Platform/MacOS/Stubs/Kernel.h"
#include "Tests/Platform/MacOS/Stubs/Ledger.h"
#include "Tests/Platform/MacOS/Stubs/PowerService.h"
#include "Tests/Platform/MacOS/Stubs/Workspace.h"

namespace platform::stub {
namespace {

class EachTest : public ::testing::EmptyTestEventListener {
  void OnTestEnd(const ::testing::TestInfo&) override {
    for (const std::string& complaint : Ledger::shared().close())
      ADD_FAILURE() << complaint;
    for (const auto& [identifier, assertion] : PowerService::shared().held)
      ADD_FAILURE() << "never released: assertion " << identifier;
    Kernel::shared().reset();
    PowerService::shared().reset();
    Workspace::shared().reset();
  }
};

const bool isListening = [] {
  // The program owns its listeners.
  ::testing::UnitTest::GetInstance()->listeners().Append(new EachTest);
  return true;
}();

}  // namespace
}  // namespace platform::stub

#include "Tests/Platform/Sleep/AssertionTableContract.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Linux/Sleep/InhibitorList.h"
#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/FakeLogind.h"

namespace platform {
namespace {

class LogindListMachine : public testing::BusMachine {
 public:
  LogindListMachine() {
    if (missing() != nullptr) return;
    logind_.emplace(systemDaemon->address());
    list_.emplace(*systemBus, *sessionBus, std::make_shared<NamedHolders>());
  }

  InhibitorList& table() { return *list_; }
  void hold(std::int32_t pid, const std::string& reason) { add("program", reason, pid); }
  void holdAsStaylit(std::int32_t pid) { add("Staylit", "waiting for work to resume", pid); }
  void fail() { logind_.reset(); }

 private:
  void add(const std::string& who, const std::string& reason, std::int32_t pid) {
    entries_.push_back({"idle", who, reason, "block", 1000, static_cast<std::uint32_t>(pid)});
    logind_->list(entries_);
  }

  std::vector<testing::FakeLogind::Entry> entries_;
  std::optional<testing::FakeLogind> logind_;
  std::optional<InhibitorList> list_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(OfLogind, AssertionTableContract, LogindListMachine);

}  // namespace
}  // namespace platform

#include "Platform/MacOS/Loop/DispatchSerialQueues.h"

#include <pthread.h>
#include <pthread/qos.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>

#include "Tests/Platform/Loop/SerialQueueContract.h"

namespace platform {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(Dispatch, SerialQueueContract, DispatchSerialQueues);

TEST(DispatchSerialQueues, RunsAtUtilityQualityOfService) {
  const auto queue = DispatchSerialQueues().make("com.staylit.tests");
  qos_class_t quality = QOS_CLASS_UNSPECIFIED;
  runOn(*queue, [&] { quality = qos_class_self(); });
  EXPECT_EQ(quality, QOS_CLASS_UTILITY);
}

TEST(DispatchSerialQueues, WaitsForWhatIsUnderWayWhenItEnds) {
  auto queue = DispatchSerialQueues().make("com.staylit.tests");
  const auto begun = std::make_shared<std::promise<void>>();
  std::atomic<bool> hasFinished = false;
  queue->async([&hasFinished, begun] {
    begun->set_value();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    hasFinished = true;
  });
  begun->get_future().wait();
  queue.reset();
  EXPECT_TRUE(hasFinished);
}

}  // namespace
}  // namespace platform

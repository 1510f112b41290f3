#include "Platform/MacOS/Loop/DispatchSerialQueues.h"

#include <dispatch/dispatch.h>

#include <atomic>
#include <utility>

#include "Platform/MacOS/Loop/DispatchWork.h"

namespace platform {
namespace {

class DispatchSerialQueue final : public tidewell::SerialQueue {
 public:
  explicit DispatchSerialQueue(const std::string& label)
      : queue_(dispatch_queue_create(
            label.c_str(),
            dispatch_queue_attr_make_with_qos_class(DISPATCH_QUEUE_SERIAL, QOS_CLASS_UTILITY, 0))) {
  }

  // Work that has not begun does nothing when its turn comes. Work that is running is waited for,
  // because it may use what is destroyed next.
  ~DispatchSerialQueue() override {
    *dropped_ = true;
    dispatch_sync(queue_, ^{
                  });
  }

  DispatchSerialQueue(const DispatchSerialQueue&) = delete;
  DispatchSerialQueue& operator=(const DispatchSerialQueue&) = delete;

  void async(std::function<void()> work) override {
    dispatchAsync(queue_, [dropped = dropped_, work = std::move(work)] {
      if (!*dropped) work();
    });
  }

 private:
  const dispatch_queue_t queue_;
  const std::shared_ptr<std::atomic<bool>> dropped_ = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace

std::unique_ptr<tidewell::SerialQueue> DispatchSerialQueues::make(const std::string& label) {
  return std::make_unique<DispatchSerialQueue>(label);
}

}  // namespace platform

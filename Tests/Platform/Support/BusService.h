#pragma once

#include <poll.h>
#include <sys/eventfd.h>
#include <systemd/sd-bus.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform::testing {

/// A service on a bus, on a thread and a connection of its own, so that a test may call it and
/// wait.
class BusService {
 public:
  /// Answers a method call, or leaves it unanswered. Runs on the service's thread.
  using Handler = std::function<void(sd_bus_message* call)>;

  BusService(const std::string& address, std::vector<std::string> names, Handler handler)
      : handler_(std::move(handler)), wakeUp_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (sd_bus_new(&bus_) < 0 || sd_bus_set_address(bus_, address.c_str()) < 0 ||
        sd_bus_set_bus_client(bus_, 1) < 0 || sd_bus_start(bus_) < 0 ||
        sd_bus_add_filter(bus_, nullptr, received, this) < 0) {
      std::abort();
    }
    for (const std::string& name : names) {
      if (sd_bus_request_name(bus_, name.c_str(), 0) < 0) std::abort();
    }
    thread_ = std::thread([this] { serve(); });
  }
  /// Leaves the bus, as a service that ends.
  ~BusService() {
    isStopping_ = true;
    ::eventfd_write(wakeUp_.get(), 1);
    thread_.join();
    sd_bus_flush_close_unref(bus_);
  }
  BusService(const BusService&) = delete;
  BusService& operator=(const BusService&) = delete;

  /// Runs `work` on the service's thread and waits for it.
  void perform(const std::function<void(sd_bus*)>& work) {
    std::promise<void> done;
    {
      const std::lock_guard lock(mutex_);
      work_.emplace_back([&] {
        work(bus_);
        sd_bus_flush(bus_);
        done.set_value();
      });
    }
    ::eventfd_write(wakeUp_.get(), 1);
    done.get_future().wait();
  }

 private:
  static int received(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
    if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0) return 0;
    static_cast<BusService*>(data)->handler_(message);
    return 1;
  }

  void serve() {
    while (!isStopping_) {
      performWork();
      int processed = 0;
      while ((processed = sd_bus_process(bus_, nullptr)) > 0) {
      }
      if (processed < 0 || isStopping_) continue;
      std::array<pollfd, 2> descriptors{
          {{sd_bus_get_fd(bus_), POLLIN, 0}, {wakeUp_.get(), POLLIN, 0}}};
      ::poll(descriptors.data(), descriptors.size(), 1000);
      eventfd_t count = 0;
      ::eventfd_read(wakeUp_.get(), &count);
    }
    performWork();
  }

  void performWork() {
    std::deque<std::function<void()>> work;
    {
      const std::lock_guard lock(mutex_);
      work.swap(work_);
    }
    for (const auto& item : work)
      item();
  }

  Handler handler_;
  Descriptor wakeUp_;
  sd_bus* bus_ = nullptr;
  std::mutex mutex_;
  std::deque<std::function<void()>> work_;
  std::atomic<bool> isStopping_ = false;
  std::thread thread_;
};

}  // namespace platform::testing

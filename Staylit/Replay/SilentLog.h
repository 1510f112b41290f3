#pragma once

#include <memory>
#include <string>

#include "Tidewell/Ports/SystemLog.h"

namespace staylit {

/// Logs nothing: what an engine that holds nothing would say of its holds is not true.
class SilentLog : public tidewell::SystemLog {
 public:
  std::shared_ptr<tidewell::SystemLogger> makeLogger(const std::string& /*subsystem*/,
                                                     const std::string& /*category*/) override {
    return std::make_shared<Logger>();
  }

 private:
  class Logger : public tidewell::SystemLogger {
   public:
    bool isEnabled(tidewell::LogType /*type*/) override { return false; }
    void emit(tidewell::LogType /*type*/, const std::string& /*message*/) override {}
  };
};

}  // namespace staylit

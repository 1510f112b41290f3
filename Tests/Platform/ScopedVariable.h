#pragma once

#include <stdlib.h>

#include <optional>
#include <string>

namespace platform {

/// Sets a variable of the environment for its own life; null removes it.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const char* value) : name_(name) {
    if (const char* former = getenv(name)) former_ = former;
    set(value);
  }
  ~ScopedVariable() { set(former_ ? former_->c_str() : nullptr); }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  void set(const char* value) {
    if (value == nullptr) {
      unsetenv(name_.c_str());
    } else {
      setenv(name_.c_str(), value, 1);
    }
  }

  std::string name_;
  std::optional<std::string> former_;
};

}  // namespace platform

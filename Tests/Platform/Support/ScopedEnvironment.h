#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace platform::testing {

/// Gives an environment variable another value, or none, until the end of the scope.
class ScopedEnvironment {
 public:
  ScopedEnvironment(std::string name, const std::optional<std::string>& value)
      : name_(std::move(name)) {
    if (const char* former = ::getenv(name_.c_str())) former_ = former;
    set(value);
  }
  /// Null removes the variable.
  ScopedEnvironment(std::string name, const char* value)
      : ScopedEnvironment(std::move(name),
                          value ? std::optional<std::string>(value) : std::nullopt) {}
  ~ScopedEnvironment() { set(former_); }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  void set(const std::optional<std::string>& value) const {
    if (value) {
      ::setenv(name_.c_str(), value->c_str(), 1);
    } else {
      ::unsetenv(name_.c_str());
    }
  }

  std::string name_;
  std::optional<std::string> former_;
};

}  // namespace platform::testing

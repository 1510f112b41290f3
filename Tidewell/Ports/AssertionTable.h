#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "Tidewell/Ports/PropertyValue.h"

namespace tidewell {

/// The sleep assertions that every process holds. Main thread only.
class AssertionTable {
 public:
  /// A process and its assertions, each a dictionary with "AssertType" (text) and "AssertLevel"
  /// (integer) among others.
  using Holder = std::pair<std::int64_t, std::vector<PropertyDictionary>>;

  virtual ~AssertionTable() = default;

  /// Absent when the service cannot be asked or answers in an unknown shape.
  virtual std::optional<std::vector<Holder>> assertionsByProcess() = 0;

  /// This process's own identifier.
  virtual std::int32_t ownProcessIdentifier() = 0;
};

}  // namespace tidewell

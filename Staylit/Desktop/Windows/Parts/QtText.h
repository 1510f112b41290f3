#pragma once

#include <QString>
#include <string_view>

namespace staylit::windows {

/// The program's texts are UTF-8.
inline QString qt(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace staylit::windows

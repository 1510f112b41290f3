#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "Platform/Linux/Text/EnvironmentLocale.h"
#include "Tidewell/Ports/Text.h"

struct UBreakIterator;
struct UCollator;

namespace platform {

/// Handles text by the rules of Unicode, with ICU. Safe from any thread.
///
/// ICU's tables are opened at the first text that is not plain ASCII. When they are missing,
/// letters beyond ASCII keep their case, the order is by code point, and only ASCII is padded.
class IcuText : public tidewell::Text {
 public:
  /// `locale` names the user's language as the environment does ("de_DE.UTF-8"); "C" and "POSIX"
  /// stand for no language.
  explicit IcuText(std::string locale = environmentLocale("LC_COLLATE"));
  ~IcuText() override;

  std::string lowercased(std::string_view text) override;
  std::weak_ordering localizedCaseInsensitiveCompare(std::string_view left,
                                                     std::string_view right) override;
  std::string padded(std::string_view text, std::size_t length) override;

 private:
  struct Closer {
    void operator()(UCollator* collator) const;
    void operator()(UBreakIterator* iterator) const;
  };

  const UCollator* collator();
  std::string paddedClusters(const std::string& text, std::size_t length);

  std::string locale_;
  std::once_flag collatorOnce_;
  std::unique_ptr<UCollator, Closer> collator_;
  /// An iterator has a position, so only one thread at a time may use it.
  std::mutex charactersMutex_;
  std::unique_ptr<UBreakIterator, Closer> characters_;
};

}  // namespace platform

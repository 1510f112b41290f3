#pragma once

#include <filesystem>
#include <string>

#include "Platform/Linux/Bus/Bus.h"
#include "Platform/Linux/Loop/EventLoop.h"

namespace staylit {

/// Shows a web page of this machine in the user's browser.
///
/// Where there is a display, the desktop's portal comes first: it gives a browser that may not read
/// the user's files access to this one. Otherwise, and where the portal cannot, it is `xdg-open`
/// and then `gio`. Main thread only; both arguments must outlive the opener.
class PageOpener {
 public:
  PageOpener(platform::EventLoop& loop, platform::Bus& sessionBus);
  PageOpener(const PageOpener&) = delete;
  PageOpener& operator=(const PageOpener&) = delete;

  /// Where a page is written to be shown: a file of the user's runtime folder, which goes at the
  /// end of the session, or else of the cache. The folder of the file is made. Exactly one of
  /// the two is set.
  struct Place {
    std::filesystem::path file;
    std::string error;
  };
  static Place place();

  /// Waits until the page is shown, as far as can be told, or the user has decided otherwise.
  /// Returns why nobody shows it, for people to read, or an empty text.
  [[nodiscard]] std::string open(const std::filesystem::path& file);

  /// Tells somebody who looks at no terminal why there is no page. Takes some seconds.
  void notify(const std::string& why);

 private:
  enum class Portal { waiting, decided, cannot };

  Portal askPortal(const std::filesystem::path& file);
  void portalDecided(Portal outcome);

  platform::EventLoop& loop_;
  platform::Bus& sessionBus_;
  Portal portal_ = Portal::waiting;
};

}  // namespace staylit

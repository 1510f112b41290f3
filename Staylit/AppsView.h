#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Staylit/Published.h"
#include "Staylit/StaylitEngine.h"
#include "Staylit/ViewChanges.h"
#include "Tidewell/AppCategory.h"
#include "Tidewell/Ports/Ports.h"

namespace staylit {

/// What the Choose Apps window shows and does: all known applications, in two lists, the watched
/// and the ignored ones.
///
/// Caches nothing but the search text. The functions that a window system needs are virtual,
/// because on Linux the windows lie in a module that links nothing of the program. Main thread
/// only; the engine and the ports must outlive the view, and the ports must be the installed ones.
class AppsView {
 public:
  /// One row.
  struct Entry {
    std::string id;  ///< The application key, as in `BusyApp::id`.
    std::string name;
    std::optional<std::string> detail;
    tidewell::AppCategory category = tidewell::AppCategory::other;
    std::string symbol;  ///< The category's system symbol.
    bool isWorking = false;

    friend bool operator==(const Entry&, const Entry&) = default;
  };

  /// One of the two lists. The texts live as long as the program.
  struct Section {
    std::string_view title;
    std::string_view subtitle;
    std::string_view symbol;
    std::string_view emptyText;
    std::string_view moveSymbol;
    std::string_view moveHint;
    std::vector<Entry> entries;
    std::string_view spokenState{};  ///< What a screen reader says of each application.
  };

  struct Footer {
    std::string text;
    std::string_view button;
    bool buttonEnabled = false;
  };

  struct Header {
    std::string_view title;
    std::string_view subtitle;
    std::string_view searchSymbol;
    std::string_view searchPlaceholder;
    /// For the button that empties the search, which is shown while there is a search text.
    std::string_view clearSymbol;
  };

  AppsView(StaylitEngine& engine, tidewell::Ports& ports);
  virtual ~AppsView();
  AppsView(const AppsView&) = delete;
  AppsView& operator=(const AppsView&) = delete;

  [[nodiscard]] virtual Header header() const;
  /// The watched applications, then the ignored ones.
  [[nodiscard]] virtual std::vector<Section> sections() const;
  /// Speaks of all ignored applications, as its button does, whatever the search shows.
  [[nodiscard]] virtual Footer footer() const;

  [[nodiscard]] virtual const std::string& search() const { return search_; }
  /// The search matches names in upper and lower case. Blanks and tabs around it do not count.
  virtual void setSearch(std::string search);

  /// Grows with every change that is made to the lists through this view.
  [[nodiscard]] virtual std::int64_t version() const { return version_; }

  /// The user chose a row: moves the application to the other list and lets the engine decide at
  /// once.
  virtual void move(const std::string& id);
  /// Empties the list of the ignored applications.
  virtual void watchEverything();

  /// The main loop calls `changed` after anything that is shown here may have changed, once the new
  /// values can be read: one call for all changes in one pass of the loop. The calls end when the
  /// subscription is dropped or the view is gone.
  [[nodiscard]] virtual Subscription observe(std::function<void()> changed);

  /// The applications that match the search, in the order in which they are shown: all of them, the
  /// watched ones, and the ignored ones.
  [[nodiscard]] std::vector<Entry> allEntries() const;
  [[nodiscard]] std::vector<Entry> watched() const;
  [[nodiscard]] std::vector<Entry> ignored() const;

 private:
  /// Those of `allEntries` that the user ignores, or those that the user does not ignore.
  [[nodiscard]] std::vector<Entry> entries(bool ignored) const;
  void listsChanged();

  StaylitEngine& engine_;
  tidewell::Ports& ports_;
  std::string search_;
  std::int64_t version_ = 0;
  ViewChanges changes_;
};

}  // namespace staylit

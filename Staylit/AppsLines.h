#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Staylit/AppsView.h"

namespace staylit {

/// One line of the Choose Apps window: the heading of a list, the text of an empty list, or an
/// application.
struct AppsLine {
  enum class Kind { heading, empty, entry };

  Kind kind = Kind::heading;
  std::size_t section = 0;  ///< The number of the line's list, from 0.
  std::string text;    ///< The list's title, the text of an empty list, or the application's name.
  std::string detail;  ///< Shown below the text; empty for none.
  std::string symbol;  ///< Shown before the text; empty for none.
  std::size_t count = 0;  ///< For a heading: how many applications its list has.

  // The fields below are for an application only.
  std::string id;
  bool isWorking = false;
  std::string moveSymbol;
  std::string moveHint;
  std::string spokenState;  ///< What its list means, for a screen reader.

  /// Whether both lines stand for the same application, heading or empty text, even where they read
  /// differently.
  [[nodiscard]] bool standsForSameAs(const AppsLine& other) const;

  /// An application's name, its list and whether it works, for a screen reader.
  [[nodiscard]] std::string spokenName() const;

  /// All that an application's line shows, for a screen reader.
  [[nodiscard]] std::string spoken() const;

  friend bool operator==(const AppsLine&, const AppsLine&) = default;
};

/// The lists of the Choose Apps window, one below the other in one column of lines.
///
/// Holds the lines that were shown last, and reaches new ones by single steps. So whoever draws the
/// lines can keep the scroll position, the selection and what a screen reader reads. Owned by the
/// window. Main thread only.
class AppsLines {
 public:
  struct Edit {
    enum class Kind { remove, insert, move, change };

    Kind kind;
    std::size_t row;          ///< For a move: where the line was.
    std::size_t movedTo = 0;  ///< For a move: where the line is now, which is always further up.

    friend bool operator==(const Edit&, const Edit&) = default;
  };
  using Listener = std::function<void(const Edit& edit)>;

  /// Goes from the lines that were shown last to the lines of `sections`. `edited` is called after
  /// each step, when the lines are as the step left them. `aboutTo`, if there is one, is called
  /// right before each step.
  void show(const std::vector<AppsView::Section>& sections, const Listener& edited,
            const Listener& aboutTo = {});

  [[nodiscard]] const std::vector<AppsLine>& lines() const { return lines_; }
  [[nodiscard]] bool isEntry(std::size_t row) const;
  /// The row of the application `id`; absent when there is no such application.
  [[nodiscard]] std::optional<std::size_t> rowOf(const std::string& id) const;
  /// The row of the first application from `row` on, else of the last one before it; absent when
  /// there are none.
  [[nodiscard]] std::optional<std::size_t> entryNear(std::size_t row) const;

 private:
  /// The functions to call before and after a step.
  struct Listeners {
    const Listener& aboutTo;
    const Listener& edited;
  };

  void removeAllBut(const std::vector<AppsLine>& next, const Listeners& listeners);
  void place(std::size_t row, const AppsLine& line, const Listeners& listeners);
  static void takeStep(const Edit& edit, const Listeners& listeners,
                       const std::function<void()>& step);

  std::vector<AppsLine> lines_;
};

/// Remembers where applications are seen in lines that are about to change, so that the view can be
/// scrolled back to them.
class AppsAnchors {
 public:
  /// Adds an application's line that is in sight. The line's upper edge is `top` below the upper
  /// edge of what is seen. The lines are added from the top to the bottom.
  void add(const AppsLine& line, double top);

  struct Place {
    std::size_t row;  ///< Where the application is now.
    double top;       ///< Where its line was seen.
  };
  /// The place of the first application that has not moved within its list; absent when all have
  /// moved.
  [[nodiscard]] std::optional<Place> firstUnmoved(const AppsLines& lines) const;

 private:
  struct Anchor {
    AppsLine line;
    double top;
  };

  std::vector<Anchor> anchors_;
};

}  // namespace staylit

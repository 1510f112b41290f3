#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Staylit/AppsView.h"

namespace staylit {

/// One line of the Choose Apps window: the heading of a list, what an empty list says, or an
/// application.
struct AppsLine {
  enum class Kind { heading, empty, entry };

  Kind kind = Kind::heading;
  std::size_t section = 0;  ///< Which of the lists, from 0.
  std::string text;         ///< The list's title, its text for none, or the application's name.
  std::string detail;       ///< Below the text; empty for none.
  std::string symbol;       ///< Before the text; empty for none.
  std::size_t count = 0;    ///< Of a heading: how many applications its list has.
  std::string id;           ///< Of an application, as all that follows.
  bool isWorking = false;
  std::string moveSymbol;
  std::string moveHint;

  /// Whether both lines are about the same thing, whatever they say of it.
  [[nodiscard]] bool isSame(const AppsLine& other) const;

  /// An application's name and whether it works, to somebody who hears it.
  [[nodiscard]] std::string spokenName() const;
  /// All that an application's line shows, to somebody who hears it.
  [[nodiscard]] std::string spoken() const;

  friend bool operator==(const AppsLine&, const AppsLine&) = default;
};

/// The lists of the Choose Apps window, one below the other in one column of lines.
///
/// Holds what was shown last, and comes to the present by single steps, so that whoever draws the
/// lines keeps the place, the selection and what is spoken of. Owned by the window. Main thread
/// only.
class AppsLines {
 public:
  struct Edit {
    enum class Kind { remove, insert, move, change };

    Kind kind;
    std::size_t row;          ///< Of a move: where the line was.
    std::size_t movedTo = 0;  ///< Of a move, which always goes up.

    friend bool operator==(const Edit&, const Edit&) = default;
  };
  using Told = std::function<void(const Edit& edit)>;

  /// `edited` is told of each step once it is done, so that the lines are the ones that the step
  /// led to; `aboutTo`, if there is one, right before.
  void show(const std::vector<AppsView::Section>& sections, const Told& edited,
            const Told& aboutTo = {});

  [[nodiscard]] const std::vector<AppsLine>& lines() const { return lines_; }
  [[nodiscard]] bool isEntry(std::size_t row) const;
  /// The row of an application.
  [[nodiscard]] std::optional<std::size_t> rowOf(const std::string& id) const;
  /// The row of the first application from `row` on, else of the last one before it; absent when
  /// there are none.
  [[nodiscard]] std::optional<std::size_t> entryNear(std::size_t row) const;

 private:
  /// Whom to tell of a step, before and after.
  struct Audience {
    const Told& aboutTo;
    const Told& edited;
  };

  void removeAllBut(const std::vector<AppsLine>& next, const Audience& audience);
  void place(std::size_t row, const AppsLine& line, const Audience& audience);
  static void make(const Edit& edit, const Audience& audience, const std::function<void()>& step);

  std::vector<AppsLine> lines_;
};

/// Where applications are seen in lines that are about to change, so that the view can be scrolled
/// to where they are afterwards.
class AppsAnchors {
 public:
  /// An application's line, whose upper edge is `top` below that of what is seen. To be called for
  /// those that are seen, from above.
  void add(const AppsLine& line, double top);

  struct Place {
    std::size_t row;  ///< Where the application is now.
    double top;       ///< Where its line was seen.
  };
  /// Of the first that has not moved within its list; absent when all have.
  [[nodiscard]] std::optional<Place> firstUnmoved(const AppsLines& lines) const;

 private:
  struct Anchor {
    AppsLine line;
    double top;
  };

  std::vector<Anchor> anchors_;
};

}  // namespace staylit

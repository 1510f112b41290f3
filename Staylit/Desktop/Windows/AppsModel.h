#pragma once

#include <QAbstractListModel>
#include <string>
#include <string_view>
#include <vector>

#include "Staylit/AppsView.h"

namespace staylit::windows {

/// The two lists of the Choose Apps window, one below the other in one list of lines: each section
/// is a heading, and then its applications or the text that stands for none.
///
/// Holds what was shown last; `show` brings it to the present by single insertions, removals and
/// moves, so that a view keeps its place.
class AppsModel : public QAbstractListModel {
 public:
  /// Of a section; the texts live as long as the program.
  struct Heading {
    std::string_view title;
    std::string_view subtitle;
    std::string_view symbol;
    std::size_t count = 0;
    friend bool operator==(const Heading&, const Heading&) = default;
  };

  struct Line {
    enum class Kind { heading, empty, entry };

    Kind kind = Kind::heading;
    std::size_t section = 0;
    Heading heading;             ///< Of a heading.
    std::string_view emptyText;  ///< Of an empty section.
    AppsView::Entry entry;       ///< Of an application, as the next two.
    std::string_view moveSymbol;
    std::string_view moveHint;

    /// What the line is about, whatever it says at the moment.
    [[nodiscard]] bool isSame(const Line& other) const;
    friend bool operator==(const Line&, const Line&) = default;
  };

  using QAbstractListModel::QAbstractListModel;

  /// Whether anything changed.
  bool show(const std::vector<AppsView::Section>& sections);

  [[nodiscard]] const Line& line(const QModelIndex& index) const { return lines_.at(at(index)); }
  /// Whether it is an application, which can be chosen.
  [[nodiscard]] bool isEntry(const QModelIndex& index) const;
  /// Invalid when there is none.
  [[nodiscard]] QModelIndex indexOf(const std::string& id) const;

  /// The first application from `row` on, in steps of 1 or -1; invalid when there is none.
  [[nodiscard]] QModelIndex nextEntry(int row, int step) const;

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

 private:
  static std::size_t at(const QModelIndex& index) { return static_cast<std::size_t>(index.row()); }

  bool removeAllBut(const std::vector<Line>& lines);
  void moveUp(std::size_t from, std::size_t to);
  void insert(std::size_t row, Line line);
  bool change(std::size_t row, const Line& line);

  std::vector<Line> lines_;
};

}  // namespace staylit::windows

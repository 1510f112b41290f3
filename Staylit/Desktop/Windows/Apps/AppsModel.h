#pragma once

#include <QAbstractListModel>
#include <string>
#include <vector>

#include "Staylit/AppsLines.h"
#include "Staylit/AppsView.h"

namespace staylit::windows {

/// The lines of the Choose Apps window in the form that Qt wants.
class AppsModel : public QAbstractListModel {
 public:
  using QAbstractListModel::QAbstractListModel;

  /// Goes over to the lines of `sections`. Returns whether anything changed.
  bool show(const std::vector<AppsView::Section>& sections);

  [[nodiscard]] const AppsLine& line(const QModelIndex& index) const {
    return lines_.lines().at(static_cast<std::size_t>(index.row()));
  }
  /// Whether the line is an application, which can be chosen.
  [[nodiscard]] bool isEntry(const QModelIndex& index) const;
  /// The line of the application `id`; invalid when there is none.
  [[nodiscard]] QModelIndex indexOf(const std::string& id) const;
  [[nodiscard]] const AppsLines& lines() const { return lines_; }

  /// How many applications each list has, for screen readers.
  [[nodiscard]] QString spokenCounts() const;

  /// The first application from `row` on, in steps of 1 or -1; invalid when there is none.
  [[nodiscard]] QModelIndex nextEntry(int row, int step) const;

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

 private:
  void begin(const AppsLines::Edit& edit);
  void finish(const AppsLines::Edit& edit);

  AppsLines lines_;
};

}  // namespace staylit::windows

#pragma once

#include <QVBoxLayout>
#include <QWidget>
#include <vector>

#include "Staylit/Desktop/Windows/Settings/SettingsRow.h"
#include "Staylit/SettingsView.h"

namespace staylit::windows {

/// The form of the Settings window: sections, each with a title and a card of rows.
class SettingsForm : public QWidget {
 public:
  static constexpr int kWidth = 460;  ///< In points.

  SettingsForm(SettingsRow::Actions actions, QWidget* parent);

  /// Makes new widgets only where the rows are others. Otherwise the keyboard stays where it is.
  void show(const std::vector<SettingsView::Section>& sections);

  /// Makes the form narrower than its own width where there is no more room.
  void fitInto(int width);

  /// The row of a control; null when the form has none.
  [[nodiscard]] SettingsRow* row(SettingsView::Control control) const;

 private:
  [[nodiscard]] bool fits(const std::vector<SettingsView::Section>& sections) const;
  void build(const std::vector<SettingsView::Section>& sections);
  void addSection(const SettingsView::Section& section);
  void fit();

  SettingsRow::Actions actions_;
  QVBoxLayout* column_;
  std::vector<SettingsView::Section> shown_;
  std::vector<SettingsRow*> rows_;
  int width_ = kWidth;
};

}  // namespace staylit::windows

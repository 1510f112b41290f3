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
  SettingsForm(SettingsRow::Actions actions, QWidget* parent);

  /// Makes new widgets only where the rows are others. Otherwise the keyboard stays where it is.
  void show(const std::vector<SettingsView::Section>& sections);

  /// The row of a control; null when the form has none.
  [[nodiscard]] SettingsRow* row(SettingsView::Control control) const;

 private:
  [[nodiscard]] bool fits(const std::vector<SettingsView::Section>& sections) const;
  void build(const std::vector<SettingsView::Section>& sections);
  void addSection(const SettingsView::Section& section);
  void fitHeight();

  SettingsRow::Actions actions_;
  QVBoxLayout* column_;
  std::vector<SettingsView::Section> shown_;
  std::vector<SettingsRow*> rows_;
};

}  // namespace staylit::windows

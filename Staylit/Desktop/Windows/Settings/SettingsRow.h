#pragma once

#include <QVBoxLayout>
#include <QWidget>
#include <functional>

#include "Staylit/Desktop/Windows/Parts/TextLabel.h"
#include "Staylit/SettingsView.h"

namespace staylit::windows {

/// One row of the Settings window: a labelled control, an error if there is one, and a caption.
class SettingsRow : public QWidget, public Spoken {
 public:
  /// The functions through which a row hands the user's actions back.
  struct Actions {
    std::function<void(SettingsView::Control control, int value)> setValue;
    std::function<void(SettingsView::Control control, bool on)> setOn;
  };

  /// The right kind of row for `row`; `parent` owns it.
  static SettingsRow* make(const SettingsView::Row& row, Actions actions, QWidget* parent);

  /// `row` has the same control and the same kind of content as the row that this one was made for.
  void show(const SettingsView::Row& row);

  [[nodiscard]] SettingsView::Control control() const { return control_; }

  [[nodiscard]] QAccessible::Role spokenRole() const override { return QAccessible::Client; }
  /// Of the control alone, whose name and description say what the texts say.
  [[nodiscard]] bool speaksOf(const QWidget& child) const override;

 protected:
  SettingsRow(const SettingsView::Row& row, QWidget* parent);

  virtual void showContent(const SettingsView::Row& row) = 0;
  /// The widget that a screen reader reads for the row, and how it is named and described.
  virtual QWidget* focus() = 0;
  [[nodiscard]] virtual QString focusName(const SettingsView::Row& row) const;
  [[nodiscard]] virtual QString focusDescription(const SettingsView::Row& row) const;

  QVBoxLayout& column() { return *column_; }
  [[nodiscard]] TextLabel* label() const { return label_; }
  [[nodiscard]] const TextLabel* caption() const { return caption_; }
  /// What the user has just chosen did not come about: its error is said, even if it is the last
  /// one once more.
  void sayErrorAgain() { saysErrorAgain_ = true; }
  /// Adds the error and the caption, which are the last two lines of the column.
  void addNotes();

 private:
  void showError(const QString& text);

  SettingsView::Control control_;
  QVBoxLayout* column_;
  TextLabel* label_;
  TextLabel* error_;
  TextLabel* caption_;
  bool saysErrorAgain_ = false;
};

}  // namespace staylit::windows

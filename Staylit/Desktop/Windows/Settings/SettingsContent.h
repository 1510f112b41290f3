#pragma once

#include "Staylit/Desktop/Windows/Parts/OverlayScrollArea.h"
#include "Staylit/Desktop/Windows/Settings/SettingsForm.h"
#include "Staylit/SettingsView.h"

namespace staylit::windows {

/// The content of the Settings window. It follows the view while it is on the screen; `view` must
/// outlive it.
class SettingsContent : public OverlayScrollArea {
 public:
  SettingsContent(SettingsView& view, QWidget* parent);

  /// What the whole form needs, in points.
  [[nodiscard]] int formHeight() const { return form_->height(); }

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;
  bool focusNextPrevChild(bool next) override;

 private:
  void setValue(SettingsView::Control control, int value);
  void setOn(SettingsView::Control control, bool on);
  void refresh();

  SettingsView& view_;
  SettingsForm* form_;
  Subscription subscription_;
};

}  // namespace staylit::windows

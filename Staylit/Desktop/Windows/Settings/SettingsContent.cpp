#include "Staylit/Desktop/Windows/Settings/SettingsContent.h"

#include "Staylit/Desktop/Windows/Settings/SettingsRow.h"

namespace staylit::windows {

using Control = SettingsView::Control;

SettingsContent::SettingsContent(SettingsView& view, QWidget* parent)
    : OverlayScrollArea(parent),
      view_(view),
      form_(new SettingsForm({[this](Control control, int value) { setValue(control, value); },
                              [this](Control control, bool on) { setOn(control, on); }},
                             this)) {
  setWidget(form_);
  refresh();
  subscription_ = view_.observe([this] {
    if (isVisible()) refresh();
  });
}

void SettingsContent::setValue(Control control, int value) {
  view_.setValue(control, value);
  refresh();
}

void SettingsContent::setOn(Control control, bool on) {
  view_.setOn(control, on);
  refresh();
  // An error under the control may have appeared out of sight.
  ensureWidgetVisible(form_->row(control), 0, 0);
}

void SettingsContent::showEvent(QShowEvent* event) {
  refresh();
  OverlayScrollArea::showEvent(event);
}

void SettingsContent::resizeEvent(QResizeEvent* event) {
  OverlayScrollArea::resizeEvent(event);
  form_->fitInto(viewport()->width());
}

/// Brings the whole row into sight, with its caption: the area by itself looks only after the
/// control.
bool SettingsContent::focusNextPrevChild(bool next) {
  if (!OverlayScrollArea::focusNextPrevChild(next)) return false;
  for (QWidget* widget = form_->focusWidget(); widget; widget = widget->parentWidget()) {
    if (!dynamic_cast<SettingsRow*>(widget)) continue;
    ensureWidgetVisible(widget, 0, kRoomForFade);
    break;
  }
  return true;
}

void SettingsContent::refresh() {
  form_->show(view_.form());
}

}  // namespace staylit::windows

#include "Staylit/Desktop/Windows/Settings/SliderRow.h"

#include <utility>

#include "Staylit/Desktop/Windows/Parts/Texts.h"

namespace staylit::windows {

SliderRow::SliderRow(const SettingsView::Row& row, SetValue setValue, QWidget* parent)
    : SettingsRow(row, parent),
      label_(new TextLabel(TextStyle::body, Tone::primary, Ground::card, this)),
      slider_(new StepSlider(this)) {
  column().addWidget(label_);
  column().addWidget(slider_);
  addNotes();
  slider_->setOnChange(
      [control = row.control, set = std::move(setValue)](int value) { set(control, value); });
}

void SliderRow::showContent(const SettingsView::Row& row) {
  label_->setText(qt(row.label));
  slider_->show(std::get<SettingsView::Slider>(row.content));
}

}  // namespace staylit::windows

#include "Staylit/Desktop/Windows/Settings/ToggleRow.h"

#include <QHBoxLayout>
#include <QMouseEvent>
#include <utility>

#include "Staylit/Desktop/Windows/Parts/Texts.h"

namespace staylit::windows {

ToggleRow::ToggleRow(const SettingsView::Row& row, SetOn setOn, QWidget* parent)
    : SettingsRow(row, parent),
      label_(new TextLabel(TextStyle::body, Tone::primary, Ground::card, this)),
      switch_(new Switch(this)) {
  auto* line = new QHBoxLayout;
  line->addWidget(label_, 1);
  line->addWidget(switch_);
  column().addLayout(line);
  addNotes();
  reachIntoMargins(!row.caption.empty());
  connect(switch_, &QCheckBox::clicked, this,
          [control = row.control, set = std::move(setOn)](bool on) { set(control, on); });
}

void ToggleRow::reachIntoMargins(bool hasNotes) {
  // The room for the switch's ring is taken from the margins, so that rows of all kinds look alike.
  QMargins margins = column().contentsMargins() - QMargins(0, Switch::kRing, Switch::kRing, 0);
  if (!hasNotes) margins.setBottom(margins.bottom() - Switch::kRing);
  column().setContentsMargins(margins);
  column().setSpacing(column().spacing() - Switch::kRing);
}

void ToggleRow::showContent(const SettingsView::Row& row) {
  label_->setText(qt(row.label));
  switch_->setChecked(std::get<SettingsView::Toggle>(row.content).isOn);
}

void ToggleRow::mousePressEvent(QMouseEvent* event) {
  // Only a widget that accepts the press is told of the release.
  event->setAccepted(event->button() == Qt::LeftButton);
}

void ToggleRow::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
    switch_->click();
}

}  // namespace staylit::windows

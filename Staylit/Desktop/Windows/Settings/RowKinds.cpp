#include "Staylit/Desktop/Windows/Settings/RowKinds.h"

#include <QHBoxLayout>
#include <QMouseEvent>
#include <utility>

#include "Staylit/Desktop/Windows/Parts/QtText.h"

namespace staylit::windows {

SliderRow::SliderRow(const SettingsView::Row& row, SetValue setValue, QWidget* parent)
    : SettingsRow(row, parent), slider_(new StepSlider(this)) {
  // Some languages need more than a line.
  label()->setWordWrap(true);
  column().addWidget(label());
  column().addWidget(slider_);
  addNotes();
  slider_->setOnChange([this, control = row.control, set = std::move(setValue)](int value) {
    set(control, value);
    Announcer::of(*this).sayLater(words_);
  });
}

void SliderRow::showContent(const SettingsView::Row& row) {
  const auto& slider = std::get<SettingsView::Slider>(row.content);
  words_ = qt(slider.text);
  slider_->show(slider);
}

ToggleRow::ToggleRow(const SettingsView::Row& row, SetOn setOn, QWidget* parent)
    : SettingsRow(row, parent), switch_(new Switch(this)) {
  label()->setWordWrap(true);
  auto* line = new QHBoxLayout;
  line->addWidget(label(), 1);
  line->addWidget(switch_);
  column().addLayout(line);
  addNotes();
  reachIntoMargins(!row.caption.empty());
  connect(switch_, &QCheckBox::clicked, this,
          [control = row.control, set = std::move(setOn)](bool on) { set(control, on); });
}

void ToggleRow::reachIntoMargins(bool hasNotes) {
  // The margins give room to the switch's ring, so that rows of all kinds have the same
  // spacing.
  const bool isSwitchOnTheLeft = layoutDirection() == Qt::RightToLeft;
  const QMargins ring(isSwitchOnTheLeft ? Switch::kRing : 0, Switch::kRing,
                      isSwitchOnTheLeft ? 0 : Switch::kRing, 0);
  QMargins margins = column().contentsMargins() - ring;
  if (!hasNotes) margins.setBottom(margins.bottom() - Switch::kRing);
  column().setContentsMargins(margins);
  column().setSpacing(column().spacing() - Switch::kRing);
}

void ToggleRow::showContent(const SettingsView::Row& row) {
  const bool isOn = std::get<SettingsView::Toggle>(row.content).isOn;
  if (switch_->isChecked() != isOn) sayErrorAgain();
  switch_->setChecked(isOn);
}

void ToggleRow::mousePressEvent(QMouseEvent* event) {
  // Only a widget that accepts the press is told of the release.
  event->setAccepted(event->button() == Qt::LeftButton);
}

void ToggleRow::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
    switch_->click();
}

ValueRow::ValueRow(const SettingsView::Row& row, QWidget* parent)
    : SettingsRow(row, parent),
      value_(new TextLabel(TextStyle::body, Tone::secondary, Ground::card, this)) {
  auto* line = new QHBoxLayout;
  line->addWidget(label());
  line->addStretch();
  line->addWidget(value_);
  column().addLayout(line);
  addNotes();
}

void ValueRow::showContent(const SettingsView::Row& row) {
  value_->setText(qt(std::get<SettingsView::Value>(row.content).text));
}

bool ValueRow::speaksOf(const QWidget& child) const {
  return &child == caption() || SettingsRow::speaksOf(child);
}

QString ValueRow::focusDescription(const SettingsView::Row&) const {
  return {};
}

QString ValueRow::focusName(const SettingsView::Row& row) const {
  // A screen reader reads each label alone, and a value means nothing without its name.
  return QStringLiteral("%1: %2").arg(qt(row.label), value_->text());
}

}  // namespace staylit::windows

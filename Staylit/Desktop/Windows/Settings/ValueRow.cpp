#include "Staylit/Desktop/Windows/Settings/ValueRow.h"

#include <QHBoxLayout>

#include "Staylit/Desktop/Windows/Parts/Texts.h"

namespace staylit::windows {

ValueRow::ValueRow(const SettingsView::Row& row, QWidget* parent)
    : SettingsRow(row, parent),
      label_(new TextLabel(TextStyle::body, Tone::primary, Ground::card, this)),
      value_(new TextLabel(TextStyle::body, Tone::secondary, Ground::card, this)) {
  auto* line = new QHBoxLayout;
  line->addWidget(label_);
  line->addStretch();
  line->addWidget(value_);
  column().addLayout(line);
  addNotes();
}

void ValueRow::showContent(const SettingsView::Row& row) {
  label_->setText(qt(row.label));
  const QString value = qt(std::get<SettingsView::Value>(row.content).text);
  value_->setText(value);
  // A screen reader reads each label alone, and a value means nothing without its name.
  value_->setAccessibleName(QStringLiteral("%1: %2").arg(qt(row.label), value));
}

}  // namespace staylit::windows

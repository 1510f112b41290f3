#include "Staylit/Desktop/Windows/Settings/SettingsRow.h"

#include <QStringList>
#include <utility>

#include "Staylit/Desktop/Windows/Parts/QtText.h"
#include "Staylit/Desktop/Windows/Settings/RowKinds.h"
#include "Tidewell/Words.h"

namespace staylit::windows {
namespace {

using tidewell::Words;

constexpr int kRowSide = 12;
constexpr int kRowMargin = 9;
constexpr int kRowSpacing = 4;

TextLabel* makeNote(Tone tone, QWidget* parent) {
  auto* note = new TextLabel(TextStyle::caption, tone, Ground::card, parent);
  note->setWordWrap(true);
  note->hide();
  return note;
}

void showNote(TextLabel& note, const QString& text) {
  // An arrow between two words stays on the line of the second one.
  QString joined = text;
  joined.replace(QStringLiteral(" → "), QStringLiteral("\u00a0→\u00a0"));
  note.setText(joined);
  note.setVisible(!text.isEmpty());
}

}  // namespace

SettingsRow* SettingsRow::make(const SettingsView::Row& row, Actions actions, QWidget* parent) {
  SettingsRow* made = nullptr;
  if (std::holds_alternative<SettingsView::Slider>(row.content)) {
    made = new SliderRow(row, std::move(actions.setValue), parent);
  } else if (std::holds_alternative<SettingsView::Toggle>(row.content)) {
    made = new ToggleRow(row, std::move(actions.setOn), parent);
  } else {
    made = new ValueRow(row, parent);
  }
  made->show(row);
  return made;
}

SettingsRow::SettingsRow(const SettingsView::Row& row, QWidget* parent)
    : QWidget(parent),
      control_(row.control),
      column_(new QVBoxLayout(this)),
      label_(new TextLabel(TextStyle::body, Tone::primary, Ground::card, this)),
      error_(makeNote(Tone::error, this)),
      caption_(makeNote(Tone::secondary, this)) {
  column_->setContentsMargins(kRowSide, kRowMargin, kRowSide, kRowMargin);
  column_->setSpacing(kRowSpacing);
}

void SettingsRow::addNotes() {
  column_->addWidget(error_);
  column_->addWidget(caption_);
  // Screen readers meet the widgets in the order in which they were raised.
  caption_->raise();
}

void SettingsRow::show(const SettingsView::Row& row) {
  label_->setText(qt(row.label));
  showContent(row);
  showNote(*caption_, qt(row.caption));
  showError(qt(row.error));
  describe(*focus(), focusName(row), focusDescription(row));
}

bool SettingsRow::speaksOf(const QWidget& child) const {
  return &child != label_ && &child != error_ && &child != caption_;
}

QString SettingsRow::focusName(const SettingsView::Row& row) const {
  return qt(row.label);
}

/// The error, how far a slider goes, the caption.
QString SettingsRow::focusDescription(const SettingsView::Row& row) const {
  QStringList parts;
  if (!row.error.empty()) parts += qt(row.error);
  if (const auto* slider = std::get_if<SettingsView::Slider>(&row.content)) {
    parts += qt(Words::shown().phrase(
        // TRANSLATORS: what a screen reader says of a slider: "From 30 seconds to 10 minutes."
        "From {lowest} to {highest}.",
        {{"lowest", slider->minimumText}, {"highest", slider->maximumText}}));
  }
  if (!row.caption.empty()) parts += qt(row.caption);
  return parts.join(QChar(' '));
}

void SettingsRow::showError(const QString& text) {
  const bool isAgain = std::exchange(saysErrorAgain_, false);
  const bool isNew = !text.isEmpty() && (isAgain || text != error_->text());
  showNote(*error_, text);
  if (!isNew) return;
  Announcer::of(*this).say(text);
}

}  // namespace staylit::windows

#include "Staylit/Desktop/Windows/Settings/SettingsForm.h"

#include <algorithm>
#include <utility>

#include "Staylit/Desktop/Windows/Parts/Card.h"
#include "Staylit/Desktop/Windows/Parts/QtText.h"

namespace staylit::windows {
namespace {

constexpr int kHeight = 620;
constexpr int kSide = 20;
constexpr int kMargin = 16;
constexpr int kTitleGap = 6;
constexpr int kSectionGap = 16;

}  // namespace

SettingsForm::SettingsForm(SettingsRow::Actions actions, QWidget* parent)
    : QWidget(parent), actions_(std::move(actions)), column_(new QVBoxLayout(this)) {
  column_->setContentsMargins(kSide, kMargin, kSide, kMargin);
  column_->setSpacing(0);
}

void SettingsForm::show(const std::vector<SettingsView::Section>& sections) {
  if (!fits(sections)) build(sections);
  std::size_t next = 0;
  for (const SettingsView::Section& section : sections) {
    // Also a row that has not changed is shown again: its switch may have to flip back.
    for (const SettingsView::Row& row : section.rows)
      rows_[next++]->show(row);
  }
  shown_ = sections;
  fit();
}

void SettingsForm::fitInto(int width) {
  width_ = std::min(kWidth, width);
  fit();
}

bool SettingsForm::fits(const std::vector<SettingsView::Section>& sections) const {
  const auto alike = [](const SettingsView::Section& one, const SettingsView::Section& other) {
    return one.title == other.title &&
           std::equal(one.rows.begin(), one.rows.end(), other.rows.begin(), other.rows.end(),
                      [](const SettingsView::Row& a, const SettingsView::Row& b) {
                        return a.control == b.control && a.content.index() == b.content.index();
                      });
  };
  return std::equal(shown_.begin(), shown_.end(), sections.begin(), sections.end(), alike);
}

void SettingsForm::build(const std::vector<SettingsView::Section>& sections) {
  rows_.clear();
  while (QLayoutItem* item = column_->takeAt(0)) {
    delete item->widget();
    delete item;
  }
  for (const SettingsView::Section& section : sections)
    addSection(section);
  column_->addStretch();
}

void SettingsForm::addSection(const SettingsView::Section& section) {
  if (column_->count() > 0) column_->addSpacing(kSectionGap);
  if (!section.title.empty()) {
    auto* title = new Heading(this);
    title->setText(qt(section.title));
    column_->addWidget(title);
    column_->addSpacing(kTitleGap);
  }
  auto* card = new Card(this);
  card->setAccessibleName(qt(section.title));
  for (const SettingsView::Row& row : section.rows) {
    rows_.push_back(SettingsRow::make(row, actions_, card));
    card->add(rows_.back());
  }
  column_->addWidget(card);
}

SettingsRow* SettingsForm::row(SettingsView::Control control) const {
  const auto found = std::find_if(rows_.begin(), rows_.end(), [control](const SettingsRow* row) {
    return row->control() == control;
  });
  return found == rows_.end() ? nullptr : *found;
}

void SettingsForm::fit() {
  column_->activate();
  // A large font, or an error, needs more room than the form's own height.
  const int needed = column_->hasHeightForWidth() ? column_->totalHeightForWidth(width_)
                                                  : column_->totalSizeHint().height();
  setFixedSize(width_, std::max(kHeight, needed));
}

}  // namespace staylit::windows

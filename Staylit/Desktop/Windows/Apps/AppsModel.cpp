#include "Staylit/Desktop/Windows/Apps/AppsModel.h"

#include <QStringList>

#include "Staylit/Desktop/Windows/Parts/QtText.h"

namespace staylit::windows {
namespace {

using Kind = AppsLine::Kind;
using Edit = AppsLines::Edit;

QString spoken(const AppsLine& line) {
  if (line.kind == Kind::heading)
    return QStringLiteral("%1, %2").arg(qt(line.text)).arg(line.count);
  return qt(line.spokenName());
}

QString described(const AppsLine& line) {
  if (line.kind != Kind::entry) return qt(line.detail);
  const QString hint = qt(line.moveHint);
  return line.detail.empty() ? hint : QStringLiteral("%1. %2").arg(qt(line.detail), hint);
}

}  // namespace

bool AppsModel::show(const std::vector<AppsView::Section>& sections) {
  bool changed = false;
  lines_.show(
      sections,
      [&](const Edit& edit) {
        finish(edit);
        changed = true;
      },
      [this](const Edit& edit) { begin(edit); });
  return changed;
}

void AppsModel::begin(const Edit& edit) {
  const int row = static_cast<int>(edit.row);
  switch (edit.kind) {
    case Edit::Kind::remove:
      return beginRemoveRows({}, row, row);
    case Edit::Kind::insert:
      return beginInsertRows({}, row, row);
    case Edit::Kind::move:
      beginMoveRows({}, row, row, {}, static_cast<int>(edit.movedTo));
      return;
    case Edit::Kind::change:
      return;
  }
}

void AppsModel::finish(const Edit& edit) {
  switch (edit.kind) {
    case Edit::Kind::remove:
      return endRemoveRows();
    case Edit::Kind::insert:
      return endInsertRows();
    case Edit::Kind::move:
      return endMoveRows();
    case Edit::Kind::change:
      break;
  }
  const QModelIndex changed = index(static_cast<int>(edit.row));
  Q_EMIT dataChanged(changed, changed);
}

bool AppsModel::isEntry(const QModelIndex& index) const {
  return index.isValid() && lines_.isEntry(static_cast<std::size_t>(index.row()));
}

QModelIndex AppsModel::indexOf(const std::string& id) const {
  const auto row = lines_.rowOf(id);
  return row ? index(static_cast<int>(*row)) : QModelIndex();
}

QString AppsModel::spokenCounts() const {
  QStringList counts;
  for (const AppsLine& line : lines_.lines()) {
    if (line.kind == Kind::heading) counts.append(spoken(line));
  }
  return counts.join(QStringLiteral(". "));
}

QModelIndex AppsModel::nextEntry(int row, int step) const {
  for (; row >= 0 && row < rowCount(); row += step) {
    if (isEntry(index(row))) return index(row);
  }
  return {};
}

int AppsModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(lines_.lines().size());
}

QVariant AppsModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const AppsLine& line = this->line(index);
  const bool entry = line.kind == Kind::entry;
  switch (role) {
    // Only applications have this text: it is what the letters that a user types are compared with.
    case Qt::DisplayRole:
      return entry ? QVariant(qt(line.text)) : QVariant();
    case Qt::ToolTipRole:
      return entry ? QVariant(qt(line.moveHint)) : QVariant();
    case Qt::AccessibleTextRole:
      return spoken(line);
    case Qt::AccessibleDescriptionRole:
      return described(line);
    default:
      return {};
  }
}

Qt::ItemFlags AppsModel::flags(const QModelIndex& index) const {
  const Qt::ItemFlags common = Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
  return isEntry(index) ? common | Qt::ItemIsSelectable : common;
}

}  // namespace staylit::windows

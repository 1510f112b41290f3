#include "Staylit/Desktop/Windows/AppsModel.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "Staylit/Desktop/Windows/Texts.h"

namespace staylit::windows {
namespace {

using Line = AppsModel::Line;

Line headingOf(const AppsView::Section& section, std::size_t number) {
  Line line;
  line.section = number;
  line.heading = {section.title, section.subtitle, section.symbol, section.entries.size()};
  return line;
}

Line emptyLineOf(const AppsView::Section& section, std::size_t number) {
  Line line;
  line.kind = Line::Kind::empty;
  line.section = number;
  line.emptyText = section.emptyText;
  return line;
}

Line entryLineOf(const AppsView::Section& section, std::size_t number,
                 const AppsView::Entry& entry) {
  Line line;
  line.kind = Line::Kind::entry;
  line.section = number;
  line.entry = entry;
  line.moveSymbol = section.moveSymbol;
  line.moveHint = section.moveHint;
  return line;
}

std::vector<Line> linesOf(const std::vector<AppsView::Section>& sections) {
  std::vector<Line> lines;
  for (std::size_t number = 0; number < sections.size(); ++number) {
    const AppsView::Section& section = sections[number];
    lines.push_back(headingOf(section, number));
    if (section.entries.empty()) lines.push_back(emptyLineOf(section, number));
    for (const AppsView::Entry& entry : section.entries)
      lines.push_back(entryLineOf(section, number, entry));
  }
  return lines;
}

auto same(const Line& line) {
  return [&line](const Line& other) { return other.isSame(line); };
}

QString spoken(const Line& line) {
  switch (line.kind) {
    case Line::Kind::heading:
      return QStringLiteral("%1, %2").arg(qt(line.heading.title)).arg(line.heading.count);
    case Line::Kind::empty:
      return qt(line.emptyText);
    case Line::Kind::entry:
      break;
  }
  const QString name = qt(line.entry.name);
  return line.entry.isWorking ? name + QStringLiteral(", working now") : name;
}

QString described(const Line& line) {
  if (line.kind == Line::Kind::heading) return qt(line.heading.subtitle);
  if (line.kind == Line::Kind::empty) return {};
  const QString hint = qt(line.moveHint);
  return line.entry.detail ? QStringLiteral("%1. %2").arg(qt(*line.entry.detail), hint) : hint;
}

}  // namespace

bool AppsModel::Line::isSame(const Line& other) const {
  if (kind != other.kind) return false;
  return kind == Kind::entry ? entry.id == other.entry.id : section == other.section;
}

bool AppsModel::show(const std::vector<AppsView::Section>& sections) {
  const std::vector<Line> next = linesOf(sections);
  bool changed = removeAllBut(next);
  for (std::size_t row = 0; row < next.size(); ++row) {
    const auto place = lines_.begin() + static_cast<std::ptrdiff_t>(row);
    const auto found = std::find_if(place, lines_.end(), same(next[row]));
    if (found == lines_.end()) {
      insert(row, next[row]);
      changed = true;
    } else if (found != place) {
      moveUp(row + static_cast<std::size_t>(found - place), row);
      changed = true;
    }
    changed |= change(row, next[row]);
  }
  return changed;
}

bool AppsModel::removeAllBut(const std::vector<Line>& lines) {
  const std::size_t before = lines_.size();
  for (std::size_t end = lines_.size(); end > 0; --end) {
    const std::size_t row = end - 1;
    if (std::any_of(lines.begin(), lines.end(), same(lines_[row]))) continue;
    beginRemoveRows({}, static_cast<int>(row), static_cast<int>(row));
    lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(row));
    endRemoveRows();
  }
  return lines_.size() != before;
}

void AppsModel::moveUp(std::size_t from, std::size_t to) {
  const int source = static_cast<int>(from);
  beginMoveRows({}, source, source, {}, static_cast<int>(to));
  const auto first = lines_.begin() + static_cast<std::ptrdiff_t>(to);
  const auto moved = lines_.begin() + static_cast<std::ptrdiff_t>(from);
  std::rotate(first, moved, std::next(moved));
  endMoveRows();
}

void AppsModel::insert(std::size_t row, Line line) {
  beginInsertRows({}, static_cast<int>(row), static_cast<int>(row));
  lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(row), std::move(line));
  endInsertRows();
}

bool AppsModel::change(std::size_t row, const Line& line) {
  if (lines_[row] == line) return false;
  lines_[row] = line;
  const QModelIndex changed = index(static_cast<int>(row));
  Q_EMIT dataChanged(changed, changed);
  return true;
}

bool AppsModel::isEntry(const QModelIndex& index) const {
  return index.isValid() && line(index).kind == Line::Kind::entry;
}

QModelIndex AppsModel::indexOf(const std::string& id) const {
  const auto found = std::find_if(lines_.begin(), lines_.end(), [&id](const Line& line) {
    return line.kind == Line::Kind::entry && line.entry.id == id;
  });
  return found == lines_.end() ? QModelIndex() : index(static_cast<int>(found - lines_.begin()));
}

QModelIndex AppsModel::nextEntry(int row, int step) const {
  for (; row >= 0 && row < rowCount(); row += step) {
    if (isEntry(index(row))) return index(row);
  }
  return {};
}

int AppsModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(lines_.size());
}

QVariant AppsModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const Line& line = lines_.at(at(index));
  const bool entry = line.kind == Line::Kind::entry;
  switch (role) {
    // Only applications: it is what typing letters in the list looks for.
    case Qt::DisplayRole:
      return entry ? QVariant(qt(line.entry.name)) : QVariant();
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

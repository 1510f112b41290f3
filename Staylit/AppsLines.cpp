#include "Staylit/AppsLines.h"

#include <algorithm>
#include <iterator>

#include "Tidewell/ForeignText.h"
#include "Tidewell/Words.h"

namespace staylit {
namespace {

using Edit = AppsLines::Edit;

AppsLine headingOf(const AppsView::Section& section, std::size_t number) {
  AppsLine line;
  line.section = number;
  line.text = section.title;
  line.detail = section.subtitle;
  line.symbol = section.symbol;
  line.count = section.entries.size();
  return line;
}

AppsLine emptyLineOf(const AppsView::Section& section, std::size_t number) {
  AppsLine line;
  line.kind = AppsLine::Kind::empty;
  line.section = number;
  line.text = section.emptyText;
  return line;
}

AppsLine entryLineOf(const AppsView::Section& section, std::size_t number,
                     const AppsView::Entry& entry) {
  AppsLine line;
  line.kind = AppsLine::Kind::entry;
  line.section = number;
  line.text = tidewell::cleaned(entry.name);  // It may be an identifier from the settings.
  line.detail = entry.detail.value_or("");
  line.symbol = entry.symbol;
  line.id = entry.id;
  line.isWorking = entry.isWorking;
  line.moveSymbol = section.moveSymbol;
  line.moveHint = section.moveHint;
  line.spokenState = section.spokenState;
  return line;
}

std::vector<AppsLine> linesOf(const std::vector<AppsView::Section>& sections) {
  std::vector<AppsLine> lines;
  for (std::size_t number = 0; number < sections.size(); ++number) {
    const AppsView::Section& section = sections[number];
    lines.push_back(headingOf(section, number));
    if (section.entries.empty()) lines.push_back(emptyLineOf(section, number));
    for (const AppsView::Entry& entry : section.entries)
      lines.push_back(entryLineOf(section, number, entry));
  }
  return lines;
}

auto standsForSameAs(const AppsLine& line) {
  return [&line](const AppsLine& other) { return other.standsForSameAs(line); };
}

auto at(std::vector<AppsLine>& lines, std::size_t row) {
  return lines.begin() + static_cast<std::ptrdiff_t>(row);
}

}  // namespace

bool AppsLine::standsForSameAs(const AppsLine& other) const {
  if (kind != other.kind) return false;
  return kind == Kind::entry ? id == other.id : section == other.section;
}

std::string AppsLine::spokenName() const {
  const std::string name = spokenState.empty() ? text : text + ", " + spokenState;
  // TRANSLATORS: what a screen reader says of an application that works at the moment.
  return isWorking ? tidewell::Words::shown().phrase("{app}, working now", {{"app", name}}) : name;
}

std::string AppsLine::spoken() const {
  return detail.empty() ? spokenName() : spokenName() + ", " + detail;
}

void AppsLines::show(const std::vector<AppsView::Section>& sections, const Listener& edited,
                     const Listener& aboutTo) {
  const std::vector<AppsLine> next = linesOf(sections);
  const Listeners listeners{aboutTo, edited};
  removeAllBut(next, listeners);
  for (std::size_t row = 0; row < next.size(); ++row)
    place(row, next[row], listeners);
}

void AppsLines::takeStep(const Edit& edit, const Listeners& listeners,
                         const std::function<void()>& step) {
  if (listeners.aboutTo) listeners.aboutTo(edit);
  step();
  listeners.edited(edit);
}

void AppsLines::removeAllBut(const std::vector<AppsLine>& next, const Listeners& listeners) {
  for (std::size_t row = lines_.size(); row-- > 0;) {
    if (std::ranges::any_of(next, standsForSameAs(lines_[row]))) continue;
    takeStep({Edit::Kind::remove, row}, listeners, [&] { lines_.erase(at(lines_, row)); });
  }
}

/// Puts `line` at `row`. All lines above it are already where they belong.
void AppsLines::place(std::size_t row, const AppsLine& line, const Listeners& listeners) {
  const auto here = at(lines_, row);
  const auto found = std::find_if(here, lines_.end(), standsForSameAs(line));
  if (found == lines_.end()) {
    takeStep({Edit::Kind::insert, row}, listeners, [&] { lines_.insert(here, line); });
    return;
  }
  if (found != here) {
    const auto from = static_cast<std::size_t>(found - lines_.begin());
    takeStep({Edit::Kind::move, from, row}, listeners,
             [&] { std::rotate(here, found, std::next(found)); });
  }
  if (lines_[row] == line) return;
  takeStep({Edit::Kind::change, row}, listeners, [&] { lines_[row] = line; });
}

bool AppsLines::isEntry(std::size_t row) const {
  return row < lines_.size() && lines_[row].kind == AppsLine::Kind::entry;
}

std::optional<std::size_t> AppsLines::rowOf(const std::string& id) const {
  for (std::size_t row = 0; row < lines_.size(); ++row) {
    if (isEntry(row) && lines_[row].id == id) return row;
  }
  return std::nullopt;
}

std::optional<std::size_t> AppsLines::entryNear(std::size_t row) const {
  for (std::size_t below = row; below < lines_.size(); ++below) {
    if (isEntry(below)) return below;
  }
  for (std::size_t above = std::min(row, lines_.size()); above-- > 0;) {
    if (isEntry(above)) return above;
  }
  return std::nullopt;
}

void AppsAnchors::add(const AppsLine& line, double top) {
  anchors_.push_back({line, top});
}

std::optional<AppsAnchors::Place> AppsAnchors::firstUnmoved(const AppsLines& lines) const {
  for (const auto& [before, top] : anchors_) {
    const std::optional<std::size_t> row = lines.rowOf(before.id);
    if (!row) continue;
    const AppsLine& now = lines.lines()[*row];
    // In each list the applications that work stand first.
    if (now.section == before.section && now.isWorking == before.isWorking) return {{*row, top}};
  }
  return std::nullopt;
}

}  // namespace staylit

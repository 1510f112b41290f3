#include "Staylit/Desktop/Menu/MenuLayout.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace staylit {
namespace {

/// How many items are remembered, which is far more than a menu ever holds. When there are more,
/// all that are no longer in the menu are forgotten.
constexpr std::size_t kMostRemembered = 256;

/// The key of the item at `place`. Items with one key are told apart by the order in which they
/// occur.
std::string keyOf(const Menu& menu, std::size_t place) {
  if (place >= menu.size()) return "end";
  const MenuItem& item = menu[place];
  if (item.action != MenuItem::Action::none) {
    return "action " + std::to_string(static_cast<int>(item.action)) + " " +
           item.representedObject.value_or("");
  }
  // A separator belongs to the item after it, so that it need not move: not every host handles
  // moves well.
  if (item.isSeparator) return "before " + keyOf(menu, place + 1);
  return place == 0 ? "first" : "text " + item.title;
}

bool holds(const MenuProperties& properties, std::string_view name) {
  return std::ranges::any_of(properties, [name](const auto& one) { return one.name == name; });
}

MenuLayout::ItemChange difference(std::int32_t id, const MenuProperties& before,
                                  const MenuProperties& after) {
  MenuLayout::ItemChange change{id, {}, {}};
  for (const MenuProperty& property : after) {
    if (std::ranges::find(before, property) == before.end()) change.updated.push_back(property);
  }
  for (const MenuProperty& property : before) {
    if (!holds(after, property.name)) change.removed.push_back(property.name);
  }
  return change;
}

}  // namespace

MenuLayout::Change MenuLayout::update(const Menu& menu) {
  std::vector<Entry> before = std::exchange(entries_, numbered(menu));
  Change change;
  change.isLayout =
      revision_ == 0 || !std::ranges::equal(before, entries_, {}, &Entry::id, &Entry::id);
  if (change.isLayout) ++revision_;
  for (Entry& old : before) {
    const Entry* present = find(old.id);
    if (!present) {
      gone_[old.id] = std::move(old.item);
      continue;
    }
    ItemChange item = difference(old.id, old.properties, present->properties);
    if (!item.updated.empty() || !item.removed.empty()) change.items.push_back(std::move(item));
  }
  for (const Entry& entry : entries_)
    gone_.erase(entry.id);
  forgetOldItems();
  return change;
}

std::vector<MenuLayout::Entry> MenuLayout::numbered(const Menu& menu) {
  std::vector<Entry> entries;
  std::map<std::string, int> occurrences;
  for (std::size_t place = 0; place < menu.size(); ++place) {
    const MenuItem& item = menu[place];
    const std::string key = keyOf(menu, place);
    const int occurrence = occurrences[key]++;
    entries.push_back({number(std::to_string(occurrence) + " " + key), item, menuProperties(item)});
  }
  return entries;
}

std::int32_t MenuLayout::number(const std::string& key) {
  const auto [place, isNew] = numbers_.try_emplace(key, 0);
  if (isNew) place->second = ++lastId_;
  return place->second;
}

void MenuLayout::forgetOldItems() {
  if (numbers_.size() <= kMostRemembered) return;
  std::erase_if(numbers_, [this](const auto& number) { return !find(number.second); });
  gone_.clear();
}

const MenuLayout::Entry* MenuLayout::find(std::int32_t id) const {
  const auto found = std::ranges::find(entries_, id, &Entry::id);
  return found == entries_.end() ? nullptr : &*found;
}

const MenuItem* MenuLayout::recall(std::int32_t id) const {
  if (const Entry* entry = find(id)) return &entry->item;
  const auto found = gone_.find(id);
  return found == gone_.end() ? nullptr : &found->second;
}

}  // namespace staylit

#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Staylit/Desktop/Menu/MenuProperties.h"
#include "Staylit/Menu.h"

namespace staylit {

/// The menu as hosts on the bus know it: every item has a number that no other item ever gets. So a
/// host that still shows an old menu cannot choose the wrong item.
///
/// An item is the same as an earlier one when it does the same to the same object. An item that
/// does nothing is the same when it says the same. The first line is always the same. A value; one
/// thread at a time.
class MenuLayout {
 public:
  static constexpr std::int32_t kRoot = 0;

  struct Entry {
    std::int32_t id;
    MenuItem item;
    MenuProperties properties;
  };

  struct ItemChange {
    std::int32_t id;
    MenuProperties updated;
    std::vector<const char*> removed;
  };

  /// How a new menu differs from the one before. When `isLayout` is true, the revision has grown.
  struct Change {
    bool isLayout = false;          ///< Whether there are other items, or another order of them.
    std::vector<ItemChange> items;  ///< Changes of items that were there before.
    explicit operator bool() const { return isLayout || !items.empty(); }
  };

  /// Takes over a new menu.
  Change update(const Menu& menu);

  [[nodiscard]] const std::vector<Entry>& entries() const { return entries_; }
  /// The revision is 0 before the first update.
  [[nodiscard]] std::uint32_t revision() const { return revision_; }
  /// Null for a number that the menu does not hold now, and for the root.
  [[nodiscard]] const Entry* find(std::int32_t id) const;
  /// The item that has or had this number, as it was last. Null for a number that no item had, and
  /// for an item that has been forgotten.
  [[nodiscard]] const MenuItem* recall(std::int32_t id) const;

 private:
  std::int32_t number(const std::string& key);
  std::vector<Entry> numbered(const Menu& menu);
  void forgetOldItems();

  std::vector<Entry> entries_;
  std::uint32_t revision_ = 0;
  std::int32_t lastId_ = kRoot;
  std::map<std::string, std::int32_t> numbers_;
  std::map<std::int32_t, MenuItem> gone_;
};

}  // namespace staylit

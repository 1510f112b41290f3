#include "Staylit/Desktop/Menu/DBusMenu.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>

#include "Platform/Linux/Bus/BusHandles.h"
#include "Platform/Linux/Bus/MessageReading.h"
#include "Staylit/Desktop/Menu/MenuMessages.h"

namespace staylit {
namespace {

using platform::BusMessage;
using platform::readTexts;

constexpr const char* kItem = "ia{sv}av";

int unknownItem(sd_bus_error* error, std::int32_t id) {
  return sd_bus_error_setf(error, SD_BUS_ERROR_INVALID_ARGS, "the menu has no item %d", id);
}

int version(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
            sd_bus_error*) {
  return sd_bus_message_append(reply, "u", 3U);
}

int textDirection(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                  sd_bus_error*) {
  return sd_bus_message_append(reply, "s", "ltr");
}

int status(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
           sd_bus_error*) {
  return sd_bus_message_append(reply, "s", "normal");
}

int iconThemePath(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                  sd_bus_error*) {
  return sd_bus_message_append(reply, "as", 0);
}

}  // namespace

const sd_bus_vtable DBusMenu::kTable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("GetLayout", "iias", "u(ia{sv}av)", getLayout, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("GetGroupProperties", "aias", "a(ia{sv})", getGroupProperties,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("GetProperty", "is", "v", getProperty, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Event", "isvu", "", event, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("EventGroup", "a(isvu)", "ai", eventGroup, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("AboutToShow", "i", "b", aboutToShow, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("AboutToShowGroup", "ai", "aiai", aboutToShowGroup, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY("Version", "u", version, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("TextDirection", "s", textDirection, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Status", "s", status, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("IconThemePath", "as", iconThemePath, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_SIGNAL("ItemsPropertiesUpdated", "a(ia{sv})a(ias)", 0),
    SD_BUS_SIGNAL("LayoutUpdated", "ui", 0),
    SD_BUS_SIGNAL("ItemActivationRequested", "iu", 0),
    SD_BUS_VTABLE_END};

void choose(MenuDelegate& menu, MenuItem::Action action) {
  const Menu items = menu.menuNeedsUpdate();
  const auto item = std::ranges::find(items, action, &MenuItem::action);
  if (item != items.end()) menu.perform(*item);
}

DBusMenu::DBusMenu(platform::EventLoop& loop, platform::Bus& bus, MenuDelegate& delegate)
    : loop_(loop),
      delegate_(delegate),
      hosts_(loop, [this] { announce(rebuild()); }),
      object_(bus, {kPath, kInterface}, kTable, this) {}

void DBusMenu::refresh() {
  if (layout_.revision() == 0) return;
  loop_.async([menu = self_.make(), this] {
    if (!menu) return;
    const MenuLayout::Change change = rebuild();
    if (hosts_.isOpen() || layout_.entries().size() != toldCount_) return announce(change);
    announceItems(change);
    isLayoutUntold_ = isLayoutUntold_ || change.isLayout;
  });
}

void DBusMenu::chooseLater(MenuItem::Action action) {
  loop_.async([menu = self_.make(), action] {
    if (menu) staylit::choose(menu->delegate_, action);
  });
}

MenuLayout::Change DBusMenu::rebuild() {
  return layout_.update(delegate_.menuNeedsUpdate());
}

MenuLayout::Change DBusMenu::rebuildToShow() {
  hosts_.surelyClosed();
  MenuLayout::Change change = rebuild();
  change.isLayout = change.isLayout || isLayoutUntold_;
  return change;
}

void DBusMenu::buildIfUnbuilt() {
  if (layout_.revision() == 0) rebuild();
}

void DBusMenu::announce(const MenuLayout::Change& change) {
  announceItems(change);
  isLayoutUntold_ = isLayoutUntold_ || change.isLayout;
  // The menus of some hosts cannot grow while they are open, so these hosts are told later.
  if (isLayoutUntold_ && !hosts_.mustKeepLayout()) announceLayout();
}

void DBusMenu::announceItems(const MenuLayout::Change& change) {
  if (change.items.empty()) return;
  object_.emit("ItemsPropertiesUpdated", [&change](sd_bus_message* message) {
    const int result = appendUpdated(message, change.items);
    return result < 0 ? result : appendRemoved(message, change.items);
  });
}

void DBusMenu::announceLayout() {
  isLayoutUntold_ = false;
  toldCount_ = layout_.entries().size();
  object_.emit("LayoutUpdated", [this](sd_bus_message* message) {
    return sd_bus_message_append(message, "ui", layout_.revision(), MenuLayout::kRoot);
  });
}

const MenuProperties* DBusMenu::propertiesOf(std::int32_t id) const {
  static const MenuProperties root = rootMenuProperties();
  if (id == MenuLayout::kRoot) return &root;
  const MenuLayout::Entry* entry = layout_.find(id);
  return entry ? &entry->properties : nullptr;
}

int DBusMenu::appendItem(sd_bus_message* reply, std::int32_t id, std::int32_t depth,
                         const Names& names) const {
  int result = sd_bus_message_open_container(reply, 'r', kItem);
  if (result >= 0) result = sd_bus_message_append(reply, "i", id);
  if (result >= 0) result = appendProperties(reply, *propertiesOf(id), names);
  if (result >= 0) result = sd_bus_message_open_container(reply, 'a', "v");
  // A negative depth asks for all levels.
  if (result >= 0 && id == MenuLayout::kRoot && depth != 0) {
    result = appendChildren(reply, depth - 1, names);
  }
  if (result >= 0) result = sd_bus_message_close_container(reply);
  return result < 0 ? result : sd_bus_message_close_container(reply);
}

int DBusMenu::appendChildren(sd_bus_message* reply, std::int32_t depth, const Names& names) const {
  int result = 0;
  for (const MenuLayout::Entry& entry : layout_.entries()) {
    if (result >= 0) result = sd_bus_message_open_container(reply, 'v', "(ia{sv}av)");
    if (result >= 0) result = appendItem(reply, entry.id, depth, names);
    if (result >= 0) result = sd_bus_message_close_container(reply);
  }
  return result;
}

int DBusMenu::getLayout(sd_bus_message* call, void* data, sd_bus_error* error) {
  auto& self = *static_cast<DBusMenu*>(data);
  std::int32_t parent = 0;
  std::int32_t depth = 0;
  Names names;
  int result = sd_bus_message_read(call, "ii", &parent, &depth);
  if (result >= 0) result = readTexts(call, names);
  if (result < 0) return result;
  MenuLayout::Change change;
  if (parent == MenuLayout::kRoot) {
    const bool isNew = self.layout_.revision() == 0;
    change = self.rebuild();
    if (isNew) change = {};
    self.toldCount_ = self.layout_.entries().size();
  }
  self.buildIfUnbuilt();
  if (!self.propertiesOf(parent)) return unknownItem(error, parent);
  sd_bus_message* raw = nullptr;
  result = sd_bus_message_new_method_return(call, &raw);
  const BusMessage reply(raw);
  if (result >= 0) result = sd_bus_message_append(raw, "u", self.layout_.revision());
  if (result >= 0) result = self.appendItem(raw, parent, std::max(depth, -1), names);
  if (result >= 0) result = sd_bus_send(nullptr, raw, nullptr);
  // The signal follows the reply, so that the caller knows already that it has this revision.
  self.announce(change);
  return result < 0 ? result : 1;
}

int DBusMenu::getGroupProperties(sd_bus_message* call, void* data, sd_bus_error* /*error*/) {
  auto& self = *static_cast<DBusMenu*>(data);
  std::vector<std::int32_t> ids;
  Names names;
  int result = readNumbers(call, ids);
  if (result >= 0) result = readTexts(call, names);
  if (result < 0) return result;
  self.buildIfUnbuilt();
  if (ids.empty()) {
    ids.push_back(MenuLayout::kRoot);
    for (const MenuLayout::Entry& entry : self.layout_.entries())
      ids.push_back(entry.id);
  }
  sd_bus_message* raw = nullptr;
  result = sd_bus_message_new_method_return(call, &raw);
  const BusMessage reply(raw);
  if (result >= 0) result = sd_bus_message_open_container(raw, 'a', "(ia{sv})");
  for (const std::int32_t id : ids) {
    const MenuProperties* properties = self.propertiesOf(id);
    if (!properties || result < 0) continue;
    result = sd_bus_message_open_container(raw, 'r', "ia{sv}");
    if (result >= 0) result = sd_bus_message_append(raw, "i", id);
    if (result >= 0) result = appendProperties(raw, *properties, names);
    if (result >= 0) result = sd_bus_message_close_container(raw);
  }
  if (result >= 0) result = sd_bus_message_close_container(raw);
  if (result >= 0) result = sd_bus_send(nullptr, raw, nullptr);
  return result < 0 ? result : 1;
}

int DBusMenu::getProperty(sd_bus_message* call, void* data, sd_bus_error* error) {
  auto& self = *static_cast<DBusMenu*>(data);
  std::int32_t id = 0;
  const char* name = nullptr;
  int result = sd_bus_message_read(call, "is", &id, &name);
  if (result < 0) return result;
  self.buildIfUnbuilt();
  const MenuProperties* properties = self.propertiesOf(id);
  if (!properties) return unknownItem(error, id);
  std::optional<MenuPropertyValue> value = defaultMenuProperty(name);
  for (const MenuProperty& property : *properties) {
    if (std::string_view(name) == property.name) value = property.value;
  }
  if (!value) return sd_bus_error_setf(error, SD_BUS_ERROR_INVALID_ARGS, "no property '%s'", name);
  sd_bus_message* raw = nullptr;
  result = sd_bus_message_new_method_return(call, &raw);
  const BusMessage reply(raw);
  if (result >= 0) result = appendVariant(raw, *value);
  if (result >= 0) result = sd_bus_send(nullptr, raw, nullptr);
  return result < 0 ? result : 1;
}

bool DBusMenu::handleEvent(std::int32_t id, const std::string& type, sd_bus_message* call) {
  const MenuItem* item = layout_.recall(id);
  if (!item && id != MenuLayout::kRoot) return false;
  if (item && type == "clicked") choose(*item);
  if (!item && type == "opened") hosts_.opened(call);
  if (!item && type == "closed") hosts_.closed(call);
  return true;
}

void DBusMenu::choose(const MenuItem& item) {
  if (!item.isEnabled || item.action == MenuItem::Action::none) return;
  // The action runs later, so that the host gets its answer first: the action may take its time, or
  // end the program.
  loop_.async([menu = self_.make(), this, item] {
    if (!menu) return;
    hosts_.surelyClosed();
    delegate_.perform(item);
    if (menu && (isLayoutUntold_ || hosts_.isOpen())) announce(rebuild());
  });
}

int DBusMenu::event(sd_bus_message* call, void* data, sd_bus_error* error) {
  auto& self = *static_cast<DBusMenu*>(data);
  std::int32_t id = 0;
  const char* type = nullptr;
  const int result = sd_bus_message_read(call, "is", &id, &type);
  if (result < 0) return result;
  if (!self.handleEvent(id, type, call)) return unknownItem(error, id);
  return sd_bus_reply_method_return(call, "");
}

int DBusMenu::eventGroup(sd_bus_message* call, void* data, sd_bus_error* error) {
  auto& self = *static_cast<DBusMenu*>(data);
  std::vector<std::int32_t> unknown;
  std::size_t count = 0;
  int result = sd_bus_message_enter_container(call, 'a', "(isvu)");
  while (result >= 0 && (result = sd_bus_message_enter_container(call, 'r', "isvu")) > 0) {
    std::int32_t id = 0;
    const char* type = nullptr;
    if ((result = sd_bus_message_read(call, "is", &id, &type)) < 0) break;
    ++count;
    if (!self.handleEvent(id, type, call)) unknown.push_back(id);
    if ((result = sd_bus_message_skip(call, "vu")) < 0) break;
    result = sd_bus_message_exit_container(call);
  }
  if (result < 0) return result;
  if (count > 0 && unknown.size() == count) return unknownItem(error, unknown.front());
  return replyWithNumbers(call, {unknown});
}

int DBusMenu::aboutToShow(sd_bus_message* call, void* data, sd_bus_error* error) {
  auto& self = *static_cast<DBusMenu*>(data);
  std::int32_t id = 0;
  int result = sd_bus_message_read(call, "i", &id);
  if (result < 0) return result;
  MenuLayout::Change change;
  if (id == MenuLayout::kRoot) change = self.rebuildToShow();
  self.buildIfUnbuilt();
  if (!self.propertiesOf(id)) return unknownItem(error, id);
  result = sd_bus_reply_method_return(call, "b", change ? 1 : 0);
  self.announce(change);
  if (id == MenuLayout::kRoot) self.hosts_.mayHaveOpened();
  return result;
}

int DBusMenu::aboutToShowGroup(sd_bus_message* call, void* data, sd_bus_error* error) {
  auto& self = *static_cast<DBusMenu*>(data);
  std::vector<std::int32_t> ids;
  int result = readNumbers(call, ids);
  if (result < 0) return result;
  MenuLayout::Change change;
  const bool isRoot = std::ranges::find(ids, MenuLayout::kRoot) != ids.end();
  if (isRoot) change = self.rebuildToShow();
  self.buildIfUnbuilt();
  std::vector<std::int32_t> unknown;
  std::ranges::copy_if(ids, std::back_inserter(unknown),
                       [&self](std::int32_t id) { return !self.propertiesOf(id); });
  if (!ids.empty() && unknown.size() == ids.size()) return unknownItem(error, unknown.front());
  std::vector<std::int32_t> changed;
  if (change) changed.push_back(MenuLayout::kRoot);
  result = replyWithNumbers(call, {changed, unknown});
  self.announce(change);
  if (isRoot) self.hosts_.mayHaveOpened();
  return result;
}

}  // namespace staylit

#include "Staylit/Desktop/StatusItem/StatusNotifierItem.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "Staylit/Desktop/Session/ActivationToken.h"
#include "Staylit/Desktop/StatusItem/StatusPixmaps.h"
#include "Tidewell/ForeignText.h"
#include "Tidewell/Log.h"

namespace staylit {
namespace {

using platform::Bus;
using platform::BusReply;

constexpr const char* kWatcher = "org.kde.StatusNotifierWatcher";
constexpr platform::BusMethod kRegisterItem{kWatcher, "/StatusNotifierWatcher", kWatcher,
                                            "RegisterStatusNotifierItem"};

/// A panel that is starting may be too busy to take the item at once.
constexpr tidewell::Seconds kFirstPause{1};
constexpr tidewell::Seconds kLongestPause{60};

constexpr std::size_t kLongestToolTip = 400;

int appendText(sd_bus_message* message, const std::string& text) {
  return sd_bus_message_append(message, "s", tidewell::cleaned(text).c_str());
}

/// Appends `(iiay)`, in network byte order, which hosts expect.
int appendPixmap(sd_bus_message* message, const StatusPixmap& pixmap, bool isDimmed) {
  std::vector<std::uint32_t> pixels;
  for (const std::uint8_t opacity : pixmap.opacities) {
    pixels.push_back(htonl(statusPixel(opacity, isDimmed)));
  }
  int result = sd_bus_message_open_container(message, 'r', "iiay");
  if (result >= 0) result = sd_bus_message_append(message, "ii", pixmap.size, pixmap.size);
  if (result >= 0) {
    result =
        sd_bus_message_append_array(message, 'y', pixels.data(), pixels.size() * sizeof pixels[0]);
  }
  return result < 0 ? result : sd_bus_message_close_container(message);
}

}  // namespace

const sd_bus_vtable StatusNotifierItem::kTable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("Category", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Id", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Title", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Status", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("WindowId", "i", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("IconThemePath", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("IconName", "s", property, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("IconPixmap", "a(iiay)", property, 0,
                    SD_BUS_VTABLE_PROPERTY_EMITS_INVALIDATION),
    SD_BUS_PROPERTY("IconAccessibleDesc", "s", property, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("OverlayIconName", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("OverlayIconPixmap", "a(iiay)", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("AttentionIconName", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("AttentionIconPixmap", "a(iiay)", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("AttentionMovieName", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("AttentionAccessibleDesc", "s", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("ToolTip", "(sa(iiay)ss)", property, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("ItemIsMenu", "b", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Menu", "o", property, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_METHOD("Activate", "ii", "", activate, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("ContextMenu", "ii", "", ignorePoint, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("SecondaryActivate", "ii", "", ignorePoint, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Scroll", "is", "", ignoreScroll, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("ProvideXdgActivationToken", "s", "", takeToken, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL("NewTitle", "", 0),
    SD_BUS_SIGNAL("NewIcon", "", 0),
    SD_BUS_SIGNAL("NewAttentionIcon", "", 0),
    SD_BUS_SIGNAL("NewOverlayIcon", "", 0),
    SD_BUS_SIGNAL("NewToolTip", "", 0),
    SD_BUS_SIGNAL("NewStatus", "s", 0),
    SD_BUS_VTABLE_END};

StatusNotifierItem::StatusNotifierItem(platform::EventLoop& loop, Bus& bus, MenuDelegate& delegate,
                                       StatusIcons icons)
    : loop_(loop),
      bus_(bus),
      icons_(std::move(icons)),
      object_(bus, {kPath, kInterface}, kTable, this),
      menu_(loop, bus, delegate) {}

void StatusNotifierItem::show(const StatusItemAppearance& appearance) {
  const StatusItemAppearance former = std::exchange(appearance_, appearance);
  if (!watcher_) {
    followWatcher();
  } else if (former != appearance_) {
    announce(former);
  }
}

void StatusNotifierItem::announce(const StatusItemAppearance& former) {
  std::vector<const char*> changed;
  if (former.symbol != appearance_.symbol ||
      former.appearsDisabled != appearance_.appearsDisabled) {
    object_.emit("NewIcon");
    changed.insert(changed.end(), {"IconName", "IconPixmap"});
  }
  if (former.accessibilityDescription != appearance_.accessibilityDescription) {
    changed.push_back("IconAccessibleDesc");
  }
  if (former.toolTip != appearance_.toolTip) {
    object_.emit("NewToolTip");
    changed.push_back("ToolTip");
  }
  object_.emitPropertiesChanged(std::move(changed));
}

std::string StatusNotifierItem::iconName() const {
  // Where there is no icon name, hosts take the pixmaps.
  if (!icons_.areThere) return "";
  return staylit::iconName(appearance_.symbol, appearance_.appearsDisabled);
}

void StatusNotifierItem::followWatcher() {
  // When a watcher is replaced, or the bus is connected anew, two calls come here: one for the
  // owner that went and one for the owner that came.
  watcher_ = bus_.watchName(kWatcher, [this](bool owned) {
    registration_.reset();
    retry_.reset();
    pause_ = kFirstPause;
    if (owned) registerItem();
  });
}

void StatusNotifierItem::registerItem() {
  // The item registers by its path. Every watcher knows that form, which most items use, and some
  // watchers cannot handle an item with a well-known name.
  registration_ = bus_.callAsync(
      kRegisterItem, [](sd_bus_message* call) { return sd_bus_message_append(call, "s", kPath); },
      [this](const BusReply& reply) {
        if (reply) return;
        if (pause_ == kFirstPause) {
          tidewell::Log::error("the status item was not taken: " +
                               (reply.errorName.empty() ? "no answer" : reply.errorName));
        }
        registerLater();
      });
}

void StatusNotifierItem::registerLater() {
  retry_ = loop_.scheduleRepeating(pause_, [this] {
    retry_.reset();
    registerItem();
  });
  pause_ = std::min(2 * pause_, kLongestPause);
}

int StatusNotifierItem::property(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/,
                                 const char* name, sd_bus_message* reply, void* data,
                                 sd_bus_error* /*error*/) {
  return static_cast<StatusNotifierItem*>(data)->appendProperty(name, reply);
}

int StatusNotifierItem::appendProperty(std::string_view name, sd_bus_message* reply) const {
  if (name == "Category") return appendText(reply, "ApplicationStatus");
  if (name == "Id") return appendText(reply, "com.staylit.app");
  if (name == "Title") return appendText(reply, "Staylit");
  if (name == "Status") return appendText(reply, "Active");
  if (name == "WindowId") return sd_bus_message_append(reply, "i", 0);
  if (name == "IconThemePath") return appendText(reply, icons_.folder);
  if (name == "IconName") return appendText(reply, iconName());
  if (name == "IconPixmap") return appendPixmaps(reply);
  if (name == "IconAccessibleDesc") return appendText(reply, appearance_.accessibilityDescription);
  if (name == "ToolTip") {
    // Some hosts read the title as markup, some do not, and some escape the title themselves.
    const std::string text =
        tidewell::withoutMarkup(tidewell::cleaned(appearance_.toolTip, kLongestToolTip));
    return sd_bus_message_append(reply, "(sa(iiay)ss)", "", 0, text.c_str(), "");
  }
  if (name == "ItemIsMenu") return sd_bus_message_append(reply, "b", 1);
  if (name == "Menu") return sd_bus_message_append(reply, "o", DBusMenu::kPath);
  if (name.ends_with("Pixmap")) return sd_bus_message_append(reply, "a(iiay)", 0);
  return appendText(reply, "");
}

int StatusNotifierItem::appendPixmaps(sd_bus_message* reply) const {
  int result = sd_bus_message_open_container(reply, 'a', "(iiay)");
  for (const StatusPixmap& pixmap : statusPixmaps()) {
    if (result < 0 || pixmap.symbol != appearance_.symbol) continue;
    result = appendPixmap(reply, pixmap, appearance_.appearsDisabled);
  }
  return result < 0 ? result : sd_bus_message_close_container(reply);
}

int StatusNotifierItem::activate(sd_bus_message* call, void* data, sd_bus_error* /*error*/) {
  // This call comes from hosts that ignore `ItemIsMenu` and show the menu only for the other mouse
  // button.
  static_cast<StatusNotifierItem*>(data)->menu_.chooseLater(MenuItem::Action::openApps);
  return sd_bus_reply_method_return(call, "");
}

int StatusNotifierItem::ignorePoint(sd_bus_message* call, void* /*data*/, sd_bus_error* /*error*/) {
  // The host shows the menu by itself, as `ItemIsMenu` says.
  return sd_bus_reply_method_return(call, "");
}

int StatusNotifierItem::ignoreScroll(sd_bus_message* call, void* /*data*/,
                                     sd_bus_error* /*error*/) {
  return sd_bus_reply_method_return(call, "");
}

int StatusNotifierItem::takeToken(sd_bus_message* call, void* /*data*/, sd_bus_error* /*error*/) {
  const char* token = nullptr;
  const int result = sd_bus_message_read(call, "s", &token);
  if (result < 0) return result;
  ActivationToken::set(token);
  return sd_bus_reply_method_return(call, "");
}

}  // namespace staylit

#include "Staylit/Desktop/Windows/Parts/Spoken.h"

#include <QAccessibleWidget>

namespace staylit::windows {
namespace {

constexpr int kPauseMilliseconds = 500;

/// What screen readers are told of a `Spoken`.
class SpokenWidget : public QAccessibleWidget {
 public:
  explicit SpokenWidget(QWidget* widget) : QAccessibleWidget(widget) {}

  [[nodiscard]] QAccessible::Role role() const override {
    const Spoken* own = spoken();
    return own ? own->spokenRole() : QAccessibleWidget::role();
  }

  [[nodiscard]] QString text(QAccessible::Text kind) const override {
    const QString given = QAccessibleWidget::text(kind);
    const Spoken* own = kind == QAccessible::Name && given.isEmpty() ? spoken() : nullptr;
    return own ? own->spokenName() : given;
  }

  [[nodiscard]] int childCount() const override { return static_cast<int>(children().size()); }
  [[nodiscard]] QAccessibleInterface* child(int number) const override {
    return children().value(number);
  }
  [[nodiscard]] int indexOfChild(const QAccessibleInterface* child) const override {
    return static_cast<int>(children().indexOf(child));
  }

 private:
  [[nodiscard]] const Spoken* spoken() const { return dynamic_cast<const Spoken*>(object()); }

  [[nodiscard]] QList<QAccessibleInterface*> children() const {
    QList<QAccessibleInterface*> met;
    const Spoken* own = spoken();
    for (int number = 0; own && number < QAccessibleWidget::childCount(); ++number) {
      QAccessibleInterface* each = QAccessibleWidget::child(number);
      const auto* widget = each ? qobject_cast<QWidget*>(each->object()) : nullptr;
      if (widget && own->speaksOf(*widget)) met.append(each);
    }
    return met;
  }
};

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
  auto* widget = qobject_cast<QWidget*>(object);
  return dynamic_cast<Spoken*>(widget) ? new SpokenWidget(widget) : nullptr;
}

}  // namespace

void Spoken::install() {
  QAccessible::installFactory(makeInterface);
}

Announcer& Announcer::of(const QWidget& widget) {
  for (QObject* child : widget.window()->children()) {
    if (auto* found = dynamic_cast<Announcer*>(child)) return *found;
  }
  return *new Announcer(widget.window());
}

Announcer::Announcer(QWidget* window) : QWidget(window) {
  hide();
  later_.setSingleShot(true);
  later_.setInterval(kPauseMilliseconds);
  connect(&later_, &QTimer::timeout, this, [this] { say(next_); });
}

void Announcer::say(const QString& text) {
  later_.stop();
  text_ = text;
  if (text.isEmpty()) return;
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
  QAccessibleAnnouncementEvent event(this, text);
#else
  // Screen readers say the name of a notification when it appears.
  QAccessibleEvent event(this, QAccessible::ObjectShow);
#endif
  QAccessible::updateAccessibility(&event);
}

void Announcer::sayLater(const QString& text) {
  next_ = text;
  later_.start();
}

QAccessible::Role Announcer::spokenRole() const {
  return QAccessible::Notification;
}

void describe(QWidget& control, const QString& name, const QString& description) {
  if (control.accessibleName() != name) control.setAccessibleName(name);
  if (control.accessibleDescription() != description) control.setAccessibleDescription(description);
}

}  // namespace staylit::windows

#pragma once

#include <QAccessible>
#include <QTimer>
#include <QWidget>

namespace staylit::windows {

/// A widget that tells screen readers what it is, because its class tells Qt too little. A class
/// inherits from QWidget and from this one.
class Spoken {
 public:
  Spoken() = default;
  virtual ~Spoken() = default;
  Spoken(const Spoken&) = delete;
  Spoken& operator=(const Spoken&) = delete;

  [[nodiscard]] virtual QAccessible::Role spokenRole() const = 0;
  /// The name where the widget has no accessible name.
  [[nodiscard]] virtual QString spokenName() const { return {}; }
  /// Whether screen readers are to meet this child.
  [[nodiscard]] virtual bool speaksOf(const QWidget& /*child*/) const { return true; }

  /// Makes Qt ask the widgets of this kind. Call it before the first window is made; further calls
  /// do nothing.
  static void install();
};

/// Says to screen readers what happened elsewhere than at the keyboard, and what only the eye would
/// notice. Invisible.
class Announcer : public QWidget, public Spoken {
 public:
  /// The announcer of the window that the widget is in, which owns it.
  static Announcer& of(const QWidget& widget);

  void say(const QString& text);
  /// Waits until nothing else is to be said for a moment: a key that is held down, or the next
  /// letter of a search, replaces the text.
  void sayLater(const QString& text);

  [[nodiscard]] QAccessible::Role spokenRole() const override;
  /// What was said last.
  [[nodiscard]] QString spokenName() const override { return text_; }

 private:
  explicit Announcer(QWidget* window);

  QString text_;
  QString next_;
  QTimer later_;
};

/// Sets name and description of a control for screen readers, and tells them only of a change.
void describe(QWidget& control, const QString& name, const QString& description);

}  // namespace staylit::windows

#pragma once

#include <QToolButton>

namespace staylit::windows {

/// A button that is nothing but a symbol. The keyboard passes it by: what it does has a key.
class SymbolButton : public QToolButton {
 public:
  SymbolButton(const QString& symbol, const QString& accessibleName, QWidget* parent);

  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QString symbol_;
};

}  // namespace staylit::windows

#pragma once

#include <QToolButton>

namespace staylit::windows {

/// A button that shows only a symbol. The keyboard skips it, because a key does the same.
class SymbolButton : public QToolButton {
 public:
  SymbolButton(QString symbol, const QString& accessibleName, QWidget* parent);

  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QString symbol_;
};

}  // namespace staylit::windows

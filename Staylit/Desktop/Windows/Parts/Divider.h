#pragma once

#include <QWidget>

namespace staylit::windows {

/// A hairline across the window.
class Divider : public QWidget {
 public:
  explicit Divider(QWidget* parent = nullptr);

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace staylit::windows

#pragma once

#include <QVBoxLayout>
#include <QWidget>

namespace staylit::windows {

/// A group of rows on a rounded ground of their own, parted by hairlines.
class Card : public QWidget {
 public:
  explicit Card(QWidget* parent = nullptr);

  void add(QWidget* row);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QVBoxLayout* column_;
};

}  // namespace staylit::windows

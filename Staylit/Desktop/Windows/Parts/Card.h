#pragma once

#include <QVBoxLayout>

#include "Staylit/Desktop/Windows/Parts/Spoken.h"

namespace staylit::windows {

/// A group of rows on a rounded ground of their own, parted by hairlines. A screen reader says its
/// accessible name when the keyboard enters it.
class Card : public QWidget, public Spoken {
 public:
  explicit Card(QWidget* parent = nullptr);

  void add(QWidget* row);

  [[nodiscard]] QAccessible::Role spokenRole() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QVBoxLayout* column_;
};

}  // namespace staylit::windows

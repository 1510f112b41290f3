#pragma once

#include <QScrollArea>
#include <QScrollBar>

namespace staylit::windows {

/// Scrolls up and down, with a bar that lies on the content's margin instead of taking its width.
class OverlayScrollArea : public QScrollArea {
 public:
  explicit OverlayScrollArea(QWidget* parent = nullptr);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void followRange();
  void placeBar();

  QScrollBar* bar_;
};

}  // namespace staylit::windows

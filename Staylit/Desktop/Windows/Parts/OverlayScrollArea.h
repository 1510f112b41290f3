#pragma once

#include <QScrollArea>
#include <QScrollBar>

namespace staylit::windows {

/// Scrolls up and down. Its bar lies on the content's margin and takes none of the content's width.
/// While there is more below, the content fades out at the lower edge.
class OverlayScrollArea : public QScrollArea {
 public:
  /// In pixels; so far above the lower edge nothing is veiled while the content goes on below.
  static constexpr int kRoomForFade = 40;

  explicit OverlayScrollArea(QWidget* parent = nullptr);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void followRange();
  void placeBar();

  QWidget* fade_;
  QScrollBar* bar_;
};

}  // namespace staylit::windows

#pragma once

#include <QLineEdit>

#include "Staylit/AppsView.h"
#include "Staylit/Desktop/Windows/Parts/SymbolButton.h"

namespace staylit::windows {

/// A search field with a symbol before the text and, while there is text, a button that empties it.
class SearchField : public QWidget {
 public:
  SearchField(const AppsView::Header& texts, QWidget* parent);

  [[nodiscard]] QLineEdit& edit() { return *edit_; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void changeEvent(QEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;

 private:
  void followPalette();
  void followFont();

  QString symbol_;
  QLineEdit* edit_;
  SymbolButton* clear_;
};

}  // namespace staylit::windows

#pragma once

#include <QPushButton>
#include <QWidget>

#include "Staylit/AppsView.h"
#include "Staylit/Desktop/Windows/Apps/AppsList.h"
#include "Staylit/Desktop/Windows/Apps/SearchField.h"
#include "Staylit/Desktop/Windows/Parts/TextLabel.h"

namespace staylit::windows {

/// The content of the Choose Apps window. It follows the view while it is on the screen; `view`
/// must outlive it.
class AppsContent : public QWidget {
 public:
  AppsContent(AppsView& view, QWidget* parent);

  /// Empties the search. Returns whether there was a search text.
  bool clearSearch();

 protected:
  void showEvent(QShowEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QWidget* makeHeader();
  QWidget* makeFooter();
  void connectControls();
  void refresh();
  void move(const std::string& id);

  AppsView& view_;
  SearchField* search_;
  AppsList* list_;
  TextLabel* footerText_;
  QPushButton* footerButton_;
  Subscription subscription_;
};

}  // namespace staylit::windows

#include "Staylit/Desktop/Windows/Apps/AppsContent.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QShortcut>
#include <QVBoxLayout>

#include "Staylit/Desktop/Windows/Parts/QtText.h"
#include "Staylit/Desktop/Windows/Parts/Shades.h"

namespace staylit::windows {
namespace {

constexpr int kPadding = 16;
constexpr int kHeaderSpacing = 9;
constexpr int kFooterMargin = 11;
constexpr int kButtonPadding = 8;

/// A hairline across the window.
class Divider : public QWidget {
 public:
  explicit Divider(QWidget* parent) : QWidget(parent) { setFixedHeight(1); }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter(this).fillRect(rect(), lineColor(Surface::window(palette())));
  }
};

}  // namespace

AppsContent::AppsContent(AppsView& view, QWidget* parent)
    : QWidget(parent),
      view_(view),
      search_(new SearchField(view.header(), this)),
      list_(new AppsList(this)),
      footerText_(new TextLabel(TextStyle::callout, Tone::secondary, Ground::window, this)),
      footerButton_(new QPushButton(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(makeHeader());
  layout->addWidget(new Divider(this));
  layout->addWidget(list_, 1);
  layout->addWidget(new Divider(this));
  QWidget* footer = makeFooter();
  layout->addWidget(footer);
  // Screen readers meet the widgets in the order in which they were raised.
  list_->raise();
  footer->raise();
  setTabOrder(&search_->edit(), list_);
  setTabOrder(list_, footerButton_);
  search_->edit().setText(qt(view_.search()));
  search_->edit().setFocus();
  list_->setAccessibleName(qt(view_.header().title));
  connectControls();
}

QWidget* AppsContent::makeHeader() {
  const AppsView::Header texts = view_.header();
  auto* header = new QWidget(this);
  auto* title = new Heading(header);
  title->setText(qt(texts.title));
  auto* subtitle = new TextLabel(TextStyle::caption, Tone::secondary, Ground::window, header);
  subtitle->setText(qt(texts.subtitle));
  subtitle->setWordWrap(true);
  auto* layout = new QVBoxLayout(header);
  layout->setContentsMargins(kPadding, kPadding, kPadding, kPadding);
  layout->setSpacing(kHeaderSpacing);
  layout->addWidget(title);
  layout->addWidget(subtitle);
  layout->addWidget(search_);
  return header;
}

QWidget* AppsContent::makeFooter() {
  auto* footer = new QWidget(this);
  auto* layout = new QHBoxLayout(footer);
  layout->setContentsMargins(kPadding, kFooterMargin, kPadding, kFooterMargin);
  layout->addWidget(footerText_);
  layout->addStretch();
  layout->addWidget(footerButton_);
  footerButton_->setText(qt(view_.footer().button));
  // Some styles leave hardly any room beside the text of a button.
  footerButton_->setMinimumWidth(footerButton_->sizeHint().width() + 2 * kButtonPadding);
  // Return presses the button too, but only while the button has the keyboard.
  footerButton_->setAutoDefault(true);
  return footer;
}

void AppsContent::connectControls() {
  QLineEdit& edit = search_->edit();
  connect(&edit, &QLineEdit::textChanged, this, [this](const QString& text) {
    view_.setSearch(text.toStdString());
    refresh();
    Announcer::of(*this).sayLater(list_->apps().spokenCounts());
  });
  edit.installEventFilter(this);
  list_->setOnChoose([this](const std::string& id) { move(id); });
  connect(footerButton_, &QPushButton::clicked, this, [this] {
    view_.watchEverything();
    refresh();
    Announcer::of(*this).say(footerText_->text());
  });
  connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, this, [this] {
    search_->edit().setFocus(Qt::ShortcutFocusReason);
    search_->edit().selectAll();
  });
  subscription_ = view_.observe([this] {
    if (isVisible()) refresh();
  });
}

/// The row goes, and the keyboard goes on from where it was. So a screen reader is told where the
/// row is now.
void AppsContent::move(const std::string& id) {
  AppsLine line = list_->apps().line(list_->apps().indexOf(id));
  view_.move(id);
  refresh();
  const QModelIndex now = list_->apps().indexOf(id);
  if (now.isValid()) {
    line = list_->apps().line(now);
  } else {
    // It is watched again, but nothing is known of it.
    line.spokenState = view_.sections().front().spokenState;
  }
  Announcer::of(*this).say(qt(line.spokenName()));
}

bool AppsContent::clearSearch() {
  if (search_->edit().text().isEmpty()) return false;
  search_->edit().clear();
  return true;
}

void AppsContent::showEvent(QShowEvent* event) {
  refresh();
  QWidget::showEvent(event);
}

bool AppsContent::eventFilter(QObject* watched, QEvent* event) {
  // The Down key leads from the search to the first application.
  if (watched == &search_->edit() && event->type() == QEvent::KeyPress &&
      static_cast<QKeyEvent*>(event)->key() == Qt::Key_Down) {
    if (!list_->apps().nextEntry(0, 1).isValid()) {
      Announcer::of(*this).say(list_->apps().spokenCounts());
      return true;
    }
    list_->putKeyboardOnFirst();
    list_->setFocus(Qt::OtherFocusReason);
    return true;
  }
  return QWidget::eventFilter(watched, event);
}

void AppsContent::refresh() {
  list_->showSections(view_.sections());
  const AppsView::Footer footer = view_.footer();
  footerText_->setText(qt(footer.text));
  footerButton_->setText(qt(footer.button));
  footerButton_->setEnabled(footer.buttonEnabled);
  describe(*footerButton_, qt(footer.button), qt(footer.text));
}

}  // namespace staylit::windows

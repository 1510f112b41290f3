#pragma once

#include <QList>
#include <QWidget>

namespace staylit {

/// The children of one class, at any depth. `QObject::findChildren` knows only classes that Qt's
/// meta-object compiler has seen; the windows' own classes are not among them.
template <typename Kind>
QList<Kind*> childrenOf(const QWidget& parent) {
  QList<Kind*> result;
  for (QWidget* child : parent.findChildren<QWidget*>()) {
    if (auto* found = dynamic_cast<Kind*>(child)) result.append(found);
  }
  return result;
}

/// The first child of one class. A window without such a child ends the program with a message.
template <typename Kind>
Kind& childOf(const QWidget& parent) {
  const QList<Kind*> children = childrenOf<Kind>(parent);
  if (children.isEmpty()) qFatal("no such widget");
  return *children.first();
}

}  // namespace staylit

#pragma once

#include <QFont>

namespace staylit::windows {

enum class TextStyle { headline, body, callout, caption, smallCaption };

/// The font of a style of text, made from the desktop's own.
QFont styled(QFont base, TextStyle style);

}  // namespace staylit::windows

#include "Staylit/History/HtmlText.h"

#include "Tidewell/ForeignText.h"

namespace staylit {

std::string htmlText(std::string_view text) {
  std::string escaped;
  for (const char character : tidewell::cleaned(text)) {
    switch (character) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\'':
        escaped += "&#39;";
        break;
      default:
        escaped += character;
    }
  }
  return escaped;
}

std::string htmlName(std::string_view name) {
  return "<bdi>" + htmlText(name) + "</bdi>";
}

}  // namespace staylit

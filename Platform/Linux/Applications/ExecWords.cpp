#include "Platform/Linux/Applications/ExecWords.h"

#include <cstddef>

namespace platform {
namespace {

bool isBlank(char character) {
  return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

}  // namespace

std::vector<std::string> execWords(std::string_view exec) {
  std::vector<std::string> words;
  bool isInWord = false;
  bool isQuoted = false;
  for (std::size_t at = 0; at < exec.size(); ++at) {
    if (!isQuoted && isBlank(exec[at])) {
      isInWord = false;
      continue;
    }
    if (!isInWord) words.emplace_back();
    isInWord = true;
    if (exec[at] == '"') {
      isQuoted = !isQuoted;
      continue;
    }
    if (isQuoted && exec[at] == '\\' && at + 1 < exec.size()) ++at;
    words.back() += exec[at];
  }
  return isQuoted ? std::vector<std::string>() : words;
}

}  // namespace platform

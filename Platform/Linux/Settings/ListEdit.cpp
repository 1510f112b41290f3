#include "Platform/Linux/Settings/ListEdit.h"

#include "Platform/Linux/Settings/TomlLiteral.h"

namespace platform {
namespace {

/// The text between two members. Where each member has a line of its own, the text is the line end
/// and the indent.
std::string separator(std::string_view list, const ListMember& member) {
  const std::size_t lineEnd = list.substr(0, member.begin).rfind('\n');
  if (lineEnd == std::string_view::npos) return " ";
  const std::string_view before = list.substr(lineEnd, member.begin - lineEnd);
  const bool isAlone = before.find_first_not_of(" \t\n") == std::string_view::npos;
  return isAlone ? std::string(before) : " ";
}

std::string_view withoutComma(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  const bool isComma = first != std::string_view::npos && text[first] == ',';
  return isComma ? text.substr(first + 1) : text;
}

}  // namespace

std::string withMembers(std::string_view list, const std::vector<ListMember>& members,
                        const std::vector<std::string>& wanted) {
  const std::string between = separator(list, members.front());
  std::string edited(list.substr(0, members.front().begin));
  auto next = wanted.begin();
  const auto addUpTo = [&](std::string_view text) {
    for (; next != wanted.end() && *next < text; ++next) {
      edited += tomlLiteral(*next) + "," + between;
    }
  };
  for (std::size_t index = 0; index + 1 < members.size(); ++index) {
    const ListMember& member = members[index];
    addUpTo(member.text);
    if (next == wanted.end() || *next != member.text) continue;
    edited += list.substr(member.begin, members[index + 1].begin - member.begin);
    ++next;
  }
  // The text after the last member ends the list. It stays even when that member goes.
  const ListMember& last = members.back();
  addUpTo(last.text);
  const bool isLastKept = next != wanted.end() && *next == last.text;
  if (isLastKept) edited += list.substr(last.begin, last.end - last.begin);
  if (isLastKept) ++next;
  bool endsWithMember = isLastKept;
  for (; next != wanted.end(); ++next, endsWithMember = true) {
    if (endsWithMember) edited += "," + between;
    edited += tomlLiteral(*next);
  }
  const std::string_view rest = list.substr(last.end);
  return edited.append(endsWithMember ? rest : withoutComma(rest));
}

}  // namespace platform

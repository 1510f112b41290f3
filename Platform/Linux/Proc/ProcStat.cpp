#include "Platform/Linux/Proc/ProcStat.h"

#include "Tidewell/TextReading.h"

namespace platform {
namespace {

/// Reads the fields after the name, which blanks separate, one after the other.
class Fields {
 public:
  explicit Fields(std::string_view text) : rest_(text) {}

  std::string_view next() {
    const std::size_t begin = rest_.find_first_not_of(" \n");
    if (begin == std::string_view::npos) return {};
    rest_.remove_prefix(begin);
    const std::string_view field = rest_.substr(0, rest_.find_first_of(" \n"));
    rest_.remove_prefix(field.size());
    return field;
  }

  template <typename Integer>
  void read(Integer& value) {
    const auto number = tidewell::wholeNumber<Integer>(next());
    ok_ = ok_ && number;
    if (number) value = *number;
  }

  void skip(int count) {
    for (; count > 0; --count)
      next();
  }

  [[nodiscard]] bool ok() const { return ok_; }

 private:
  std::string_view rest_;
  bool ok_ = true;
};

}  // namespace

std::optional<ProcStat> parseProcStat(std::string_view text) {
  const std::size_t open = text.find('(');
  const std::size_t close = text.rfind(')');
  if (open == std::string_view::npos || close == std::string_view::npos || close < open) {
    return std::nullopt;
  }
  ProcStat stat;
  stat.comm = text.substr(open + 1, close - open - 1);

  Fields fields(text.substr(close + 1));
  const std::string_view state = fields.next();
  if (state.size() != 1) return std::nullopt;
  stat.state = state.front();
  fields.read(stat.parentPid);
  fields.skip(1);  // process group
  fields.read(stat.session);
  fields.read(stat.terminal);
  fields.skip(6);  // foreground group, flags, page faults
  fields.read(stat.userTicks);
  fields.read(stat.systemTicks);
  fields.read(stat.childUserTicks);
  fields.read(stat.childSystemTicks);
  fields.skip(4);  // priority, nice, threads, itrealvalue
  fields.read(stat.startTicks);
  return fields.ok() ? std::optional(std::move(stat)) : std::nullopt;
}

}  // namespace platform

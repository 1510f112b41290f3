// A tape: the file as it is, and the frames below its checksums.

#include <memory>
#include <string>

#include "Staylit/Replay/Replay.h"
#include "Staylit/Replay/ReplayReport.h"
#include "Staylit/Replay/TapeBlock.h"
#include "Staylit/Replay/TapeFormat.h"
#include "Tests/Fakes/FakeText.h"
#include "Tests/Fuzz/Fuzzer.h"
#include "Tidewell/Utf8.h"

namespace {

void replay(std::string_view file) {
  const auto text = std::make_shared<tidewell::FakeText>();
  staylit::Replay replay(text, {});
  replay.play(file);
  const staylit::ReplayReport report(replay.finish(), std::nullopt, {});
  for (const std::string& line : report.lines(*text, {true, false}))
    fuzz::require(tidewell::isValidUtf8(line));
  fuzz::require(tidewell::isValidUtf8(report.json()));
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input = fuzz::textOf(data, size);
  const std::string opening(staylit::tapeFormat::kOpening);
  if (input.starts_with(opening)) {
    replay(input);
  } else if (size <= staylit::tapeBlock::kCapacity) {
    replay(opening + staylit::tapeBlock::packed(input));
  }
  return 0;
}

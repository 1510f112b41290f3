#include "Staylit/Replay/ReplayCommand.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <ios>
#include <optional>
#include <system_error>
#include <utility>

#include "Staylit/Replay/Replay.h"
#include "Staylit/Replay/ReplayReport.h"
#include "Staylit/Replay/TapeCopy.h"
#include "Staylit/Replay/TapeFile.h"
#include "Staylit/Replay/TapeReader.h"
#include "Staylit/Replay/TapeRing.h"

namespace staylit {
namespace {

namespace fs = std::filesystem;

constexpr const char* kNoRing =
    R"(the ring has nothing; "ring = true" below "[history]" in settings.toml switches it on)";

/// The whole file; absent when it cannot be read, is no file or is larger than any recording.
std::optional<std::string> fileContent(const std::string& path) {
  std::error_code error;
  const std::uint64_t size = fs::file_size(path, error);
  if (error || size > TapeFile::kLargest || !fs::is_regular_file(path, error)) return std::nullopt;
  std::string content(size, '\0');
  std::ifstream file(path, std::ios::binary);
  if (!file.read(content.data(), static_cast<std::streamsize>(size))) return std::nullopt;
  return content;
}

}  // namespace

ReplayCommand::ReplayCommand(tidewell::Console& console, std::shared_ptr<tidewell::Text> text,
                             std::string ring)
    : console_(console), text_(std::move(text)), ring_(std::move(ring)) {}

ReplayCommand::Exit ReplayCommand::replay(const ReplayRequest& request, HistoryTexts::Style style) {
  if (!request.error.empty()) return fail(request.error);
  const auto files = request.file ? read({*request.file}) : ringFiles();
  if (!files) return trouble;
  const auto played = [&](tidewell::PropertyDictionary settings) {
    Replay replay(text_, std::move(settings));
    for (const std::string& file : *files)
      replay.play(file);
    return replay.finish();
  };
  ReplayResult plain = played({});
  std::optional<ReplayResult> changed;
  if (!request.settings.empty()) {
    tidewell::PropertyDictionary settings;
    for (const SettingValue& setting : request.settings)
      settings.insert_or_assign(setting.key, setting.value);
    changed = played(std::move(settings));
  }
  const ReplayReport report(std::move(plain), std::move(changed), request.settingTexts);
  if (request.form == ReplayRequest::Form::json) {
    console_.printLine(report.json());
  } else {
    for (const std::string& line : report.lines(*text_, style))
      console_.printLine(line);
  }
  if (report.isEmpty()) return trouble;
  return report.isFaithful() ? done : differs;
}

ReplayCommand::Exit ReplayCommand::copyRing(const RecordRequest& request,
                                            std::unique_ptr<tidewell::PrivateFile> file) {
  const auto files = ringFiles();
  if (!files) return trouble;
  TapeFile output(std::move(file));
  MadeUpNames names(*text_);
  TapeCopy copy(output, *text_, request.hasMadeUpNames ? &names : nullptr);
  for (const std::string& content : *files)
    copy.copy(content);
  copy.finish();
  if (!output.error().empty()) return fail(output.error());
  console_.printLine(request.file + " has what the ring had: " + std::to_string(copy.ticks()) +
                     " ticks in " + std::to_string(copy.bytes()) + " bytes.");
  return done;
}

std::optional<std::vector<std::string>> ReplayCommand::read(const std::vector<std::string>& paths) {
  std::vector<std::string> contents;
  for (const std::string& path : paths) {
    auto content = fileContent(path);
    const std::optional<TapeReader> reader =
        content ? std::optional<TapeReader>(std::in_place, *content) : std::nullopt;
    if (!reader || !reader->isTape()) {
      fail(path + (!reader                      ? " cannot be read"
                   : content->empty()           ? " has nothing yet"
                   : reader->isOfLaterVersion() ? " was recorded by a later version of Staylit"
                                                : " is no recording of Staylit"));
      return std::nullopt;
    }
    contents.push_back(std::move(*content));
  }
  return contents;
}

std::optional<std::vector<std::string>> ReplayCommand::ringFiles() {
  std::vector<tidewell::PrivateFolder::Entry> entries;
  std::error_code error;
  for (fs::directory_iterator place(ring_, error), end; !error && place != end;
       place.increment(error)) {
    entries.push_back({place->path().filename(), 0, 0});
  }
  std::vector<std::string> contents;
  for (const std::string& name : TapeRing::filesOf(entries)) {
    // The program that runs may remove the oldest at any time.
    if (auto content = fileContent((fs::path(ring_) / name).string())) {
      contents.push_back(std::move(*content));
    }
  }
  if (!contents.empty()) return contents;
  fail(kNoRing);
  return std::nullopt;
}

ReplayCommand::Exit ReplayCommand::fail(const std::string& why) {
  console_.writeError("staylit: " + why + "\n");
  return trouble;
}

}  // namespace staylit

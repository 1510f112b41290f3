#include "Staylit/Desktop/Replay/Recordings.h"

#include <filesystem>
#include <utility>

#include "Platform/Linux/Files/XdgFolders.h"
#include "Platform/Linux/LinuxPorts.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Platform/Posix/Files/PosixPrivateFolder.h"
#include "Staylit/Replay/RecordSession.h"
#include "Staylit/Replay/ReplayCommand.h"
#include "Staylit/Version.h"

namespace staylit {

namespace fs = std::filesystem;

int Recordings::replay(const ReplayRequest& request, HistoryTexts::Style style) {
  return ReplayCommand(console_, platform::makeLinuxText(), platform::ringFolder())
      .replay(request, style);
}

int Recordings::record(const RecordRequest& request) {
  using Folder = platform::PosixPrivateFolder;
  if (!request.error.empty()) {
    console_.writeError("staylit: " + request.error + "\n");
    return ReplayCommand::trouble;
  }
  const fs::path path = fs::absolute(request.file);
  Folder folder(path.parent_path(), Folder::Trust::any);
  auto creation = folder.create(path.filename());
  if (!creation.file) {
    console_.writeError("staylit: " + request.file + ": " + creation.error + "\n");
    return ReplayCommand::trouble;
  }
  if (!request.isOfRing) return recordInto(std::move(creation.file), request);
  const int status = ReplayCommand(console_, platform::makeLinuxText(), platform::ringFolder())
                         .copyRing(request, std::move(creation.file));
  // What has no recording in it would only be in the way of the next attempt.
  if (status == ReplayCommand::trouble) folder.remove(path.filename());
  return status;
}

int Recordings::recordInto(std::unique_ptr<tidewell::PrivateFile> file,
                           const RecordRequest& request) {
  using Names = TapeRecorder::Names;
  const auto loop = std::make_shared<platform::EventLoop>();
  // Before any thread exists.
  loop->watchTerminationSignals([&loop] { loop->stop(); });
  const auto ports = platform::makeLinuxPorts(loop);
  const tidewell::InstalledPorts installed(*ports);
  RecordSession session(*ports, std::move(file),
                        request.hasMadeUpNames ? Names::madeUp : Names::asTheyAre,
                        std::string("Staylit ") + programVersion(), [&loop] { loop->stop(); });
  session.start(request.file);
  loop->run();
  return session.finish();
}

}  // namespace staylit

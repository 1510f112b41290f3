#include "Staylit/AppKit/Replay/Recordings.h"

#import <CoreFoundation/CoreFoundation.h>
#include <dispatch/dispatch.h>

#include <csignal>
#include <filesystem>
#include <utility>
#include <vector>

#include "Platform/MacOS/Settings/RingFolder.h"
#include "Platform/Posix/Files/PosixPrivateFolder.h"
#include "Staylit/AppKit/History/KeptHistory.h"
#include "Staylit/Replay/RecordSession.h"
#include "Staylit/Replay/ReplayCommand.h"
#include "Staylit/Version.h"

namespace staylit {
namespace {

namespace fs = std::filesystem;

/// Makes the signals that end a program end the run loop of the main thread instead.
class RunLoopEndings {
 public:
  RunLoopEndings() {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
      std::signal(signal, SIG_IGN);
      dispatch_source_t source =
          dispatch_source_create(DISPATCH_SOURCE_TYPE_SIGNAL, static_cast<uintptr_t>(signal), 0,
                                 dispatch_get_main_queue());
      dispatch_source_set_event_handler(source, ^{
        CFRunLoopStop(CFRunLoopGetMain());
      });
      dispatch_resume(source);
      sources_.push_back(source);
    }
  }
  ~RunLoopEndings() {
    for (dispatch_source_t source : sources_) dispatch_source_cancel(source);
  }
  RunLoopEndings(const RunLoopEndings&) = delete;
  RunLoopEndings& operator=(const RunLoopEndings&) = delete;

 private:
  std::vector<dispatch_source_t> sources_;
};

}  // namespace

int Recordings::replay(const ReplayRequest& request) {
  return ReplayCommand(*ports_.console, ports_.text, platform::ringFolder())
      .replay(request, terminalStyle(ports_));
}

int Recordings::record(const RecordRequest& request) {
  using Folder = platform::PosixPrivateFolder;
  if (!request.error.empty()) {
    ports_.console->writeError("staylit: " + request.error + "\n");
    return ReplayCommand::trouble;
  }
  const fs::path path = fs::absolute(request.file);
  Folder folder(path.parent_path(), Folder::Trust::any);
  auto creation = folder.create(path.filename());
  if (!creation.file) {
    ports_.console->writeError("staylit: " + request.file + ": " + creation.error + "\n");
    return ReplayCommand::trouble;
  }
  if (!request.isOfRing) return recordInto(std::move(creation.file), request);
  const int status = ReplayCommand(*ports_.console, ports_.text, platform::ringFolder())
                         .copyRing(request, std::move(creation.file));
  // What has no recording in it would only be in the way of the next attempt.
  if (status == ReplayCommand::trouble) folder.remove(path.filename());
  return status;
}

int Recordings::recordInto(std::unique_ptr<tidewell::PrivateFile> file,
                           const RecordRequest& request) {
  using Names = TapeRecorder::Names;
  const tidewell::InstalledPorts installed(ports_);
  const RunLoopEndings endings;
  RecordSession session(
      ports_, std::move(file), request.hasMadeUpNames ? Names::madeUp : Names::asTheyAre,
      std::string("Staylit ") + programVersion(), [] { CFRunLoopStop(CFRunLoopGetMain()); });
  session.start(request.file);
  CFRunLoopRun();
  return session.finish();
}

}  // namespace staylit

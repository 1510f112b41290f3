#pragma once

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>

#include "Platform/Linux/System/Descriptor.h"
#include "Tests/Platform/Support/ChildProgram.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform::testing {

/// A message bus of the test's own, which lets everybody do everything. Its address stays the same
/// when it is stopped and started again.
class PrivateBus {
 public:
  PrivateBus() {
    folder_.write("bus.conf", "<busconfig><type>custom</type><listen>" + address() +
                                  "</listen><auth>EXTERNAL</auth><servicedir>" +
                                  (folder_.path() / "services").string() +
                                  "</servicedir><policy context=\"default\">"
                                  "<allow send_destination=\"*\" eavesdrop=\"true\"/>"
                                  "<allow eavesdrop=\"true\"/><allow own=\"*\"/>"
                                  "</policy></busconfig>");
    std::filesystem::create_directory(folder_.path() / "services");
    start();
  }

  [[nodiscard]] std::string address() const { return "unix:path=" + socketPath().string(); }

  /// Lets the bus start `command` when somebody asks for `name`. Takes effect with the next start.
  void offer(const std::string& name, const std::string& command) const {
    folder_.write("services/" + name + ".service",
                  "[D-BUS Service]\nName=" + name + "\nExec=" + command + "\n");
  }

  void start() {
    std::filesystem::remove(socketPath());
    daemon_ = ChildProgram({"dbus-daemon", "--nofork", "--nopidfile",
                            "--config-file=" + (folder_.path() / "bus.conf").string()},
                           silence);
    for (int attempt = 0; attempt < 1000 && !answers(); ++attempt) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }
  void stop() { daemon_.kill(); }

  /// Stops and continues it, as a bus that hangs.
  void freeze() { ::kill(daemon_.pid(), SIGSTOP); }
  void thaw() { ::kill(daemon_.pid(), SIGCONT); }

 private:
  [[nodiscard]] std::filesystem::path socketPath() const { return folder_.path() / "bus"; }

  [[nodiscard]] bool answers() const {
    const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    std::strncpy(name.sun_path, socketPath().c_str(), sizeof name.sun_path - 1);
    return ::connect(socket.get(), reinterpret_cast<sockaddr*>(&name), sizeof name) == 0;
  }

  TemporaryFolder folder_;
  ChildProgram daemon_;
};

}  // namespace platform::testing

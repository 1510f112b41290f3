#pragma once

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <thread>

#include "Platform/Posix/Files/Descriptor.h"
#include "Tests/Platform/Support/ChildProgram.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform::testing {

/// A message bus of the test's own. Its address stays the same when it is stopped and started
/// again.
class PrivateBus {
 public:
  /// What the bus allows to whom.
  enum class Policy {
    own,        ///< Like a session's bus: this user may do everything, and others may not connect.
    everybody,  ///< Everybody may do everything.
    careless,   ///< Everybody may do everything, also send replies that nobody asked for.
    system,     ///< Like the machine's system bus, but root may own any name.
  };
  static constexpr const char* kSystemPolicy = "/usr/share/dbus-1/system.conf";

  explicit PrivateBus(Policy policy = Policy::own) {
    folder_.write("bus.conf",
                  policy == Policy::system ? systemConfiguration() : configuration(policy));
    std::filesystem::create_directory(folder_.path() / "services");
    if (policy != Policy::own) {
      std::filesystem::permissions(folder_.path(), std::filesystem::perms(0755));
    }
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

  /// Stops and continues the bus, which hangs meanwhile.
  void freeze() { ::kill(daemon_.pid(), SIGSTOP); }
  void thaw() { ::kill(daemon_.pid(), SIGCONT); }

 private:
  [[nodiscard]] std::string configuration(Policy policy) const {
    const std::string users = policy == Policy::own ? "" : "<allow user=\"*\"/>";
    const std::string replies = policy == Policy::careless
                                    ? "<allow send_requested_reply=\"false\"/>"
                                      "<allow receive_requested_reply=\"false\"/>"
                                    : "";
    return "<busconfig><type>custom</type><listen>" + address() +
           "</listen><auth>EXTERNAL</auth><servicedir>" + (folder_.path() / "services").string() +
           "</servicedir><policy context=\"default\">" + users +
           "<allow send_destination=\"*\" eavesdrop=\"true\"/>"
           "<allow eavesdrop=\"true\"/><allow own=\"*\"/>" +
           replies + "</policy></busconfig>";
  }

  /// The configuration of the machine's bus, without the lines that would reach outside of the
  /// test: user, process, address, and the services to start.
  [[nodiscard]] std::string systemConfiguration() const {
    std::ifstream file(kSystemPolicy);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    text = std::regex_replace(text, std::regex("<!--[^]*?-->"), "");
    text = std::regex_replace(
        text,
        std::regex("<(user|pidfile|servicehelper|listen)>[^<]*</[a-z]*>|"
                   "<(fork|syslog|standard_system_servicedirs)/>|<include [^>]*>[^<]*</include>"),
        "");
    text = std::regex_replace(text, std::regex("<includedir>system.d</includedir>"),
                              "<includedir>/usr/share/dbus-1/system.d</includedir>");
    return std::regex_replace(text, std::regex("</busconfig>"),
                              "<listen>" + address() +
                                  "</listen><policy user=\"root\"><allow own=\"*\"/>"
                                  "<allow send_type=\"method_call\"/></policy></busconfig>");
  }

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

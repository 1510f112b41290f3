#include "Staylit/Desktop/History/PageOpener.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <thread>
#include <vector>

#include "Platform/Linux/Files/XdgFolders.h"
#include "Platform/Posix/Files/Descriptor.h"
#include "Platform/Posix/Files/OwnFolder.h"
#include "Staylit/Desktop/Session/DesktopNotification.h"
#include "Tidewell/Words.h"

namespace staylit {
namespace {

using namespace std::chrono_literals;

constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr platform::BusMethod kOpenFile{kPortal, kPortalPath, "org.freedesktop.portal.OpenURI",
                                        "OpenFile", platform::BusActivation::ifNeeded};
constexpr const char* kToken = "staylit_history";
/// The portal may let the user choose a program, and ends this question when the asker is gone.
constexpr tidewell::Seconds kLongestChoice{300};
/// A tool that has not failed by then is, or has started, the browser.
constexpr auto kLongestStart = 5s;
/// A service that shows notifications may have to start first.
constexpr tidewell::Seconds kNotification{3};

bool hasDisplay() {
  const auto isSet = [](const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0';
  };
  return isSet("WAYLAND_DISPLAY") || isSet("DISPLAY");
}

/// The object by which the portal tells the outcome of a request of this connection.
std::string requestPath(sd_bus* bus) {
  const char* name = nullptr;
  if (sd_bus_get_unique_name(bus, &name) < 0) return {};
  std::string sender = name + 1;  // Without the colon.
  for (char& character : sender) {
    if (character == '.') character = '_';
  }
  return std::string(kPortalPath) + "/request/" + sender + "/" + kToken;
}

/// Starts a tool in a session of its own, so that the browser outlives this terminal.
class OpeningTool {
 public:
  explicit OpeningTool(std::vector<std::string> words) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words)
      arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK);
    if (posix_spawnp(&child_, arguments[0], &files, &attributes, arguments.data(), environ) != 0) {
      child_ = 0;
    }
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
  }

  /// Whether it ended well, or still runs after a while.
  [[nodiscard]] bool shows() const {
    if (child_ == 0) return false;
    const auto limit = std::chrono::steady_clock::now() + kLongestStart;
    for (;;) {
      int status = 0;
      const pid_t ended = waitpid(child_, &status, WNOHANG);
      if (ended == child_) return WIFEXITED(status) && WEXITSTATUS(status) == 0;
      if (ended < 0 && errno != EINTR) return false;
      if (std::chrono::steady_clock::now() > limit) return true;
      std::this_thread::sleep_for(20ms);
    }
  }

 private:
  pid_t child_ = 0;
};

}  // namespace

PageOpener::PageOpener(platform::EventLoop& loop, platform::Bus& sessionBus)
    : loop_(loop), sessionBus_(sessionBus) {}

PageOpener::Place PageOpener::place() {
  std::filesystem::path parent = platform::xdgRuntimeFolder();
  if (parent.empty()) {
    parent = platform::xdgCacheHome();
    std::error_code ignored;
    std::filesystem::create_directories(parent, ignored);
  }
  if (parent.empty()) {
    // TRANSLATORS: the text of the notification "The history cannot be shown"; "it" is the page.
    return {{}, tidewell::toBePhrased("there is no folder for it: this user has no home")};
  }
  const std::filesystem::path folder = parent / "staylit";
  const auto made = platform::OwnFolder::make(folder, platform::describeError);
  if (!made) return {{}, folder.string() + ": " + made.error};
  return {folder / "history.html", ""};
}

std::string PageOpener::open(const std::filesystem::path& file) {
  if (hasDisplay() && askPortal(file) == Portal::decided) return "";
  const std::string path = std::filesystem::absolute(file).string();
  if (OpeningTool({"xdg-open", path}).shows()) return "";
  if (OpeningTool({"gio", "open", path}).shows()) return "";
  return tidewell::toBePhrased("no program here shows web pages");
}

PageOpener::Portal PageOpener::askPortal(const std::filesystem::path& file) {
  const platform::Descriptor page(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  if (!page || sessionBus_.connect() < 0) return Portal::cannot;
  portal_ = Portal::waiting;
  const auto response = sessionBus_.subscribe(
      {kPortal, requestPath(sessionBus_.handle()), "org.freedesktop.portal.Request", "Response"},
      [this](sd_bus_message* message) {
        std::uint32_t outcome = 2;
        sd_bus_message_read(message, "u", &outcome);
        // 0 is shown, 1 is that the user wants it no more.
        portalDecided(outcome <= 1 ? Portal::decided : Portal::cannot);
      });
  const platform::BusSlot call = sessionBus_.callAsync(
      kOpenFile,
      [&page](sd_bus_message* message) {
        const char* token = std::getenv("XDG_ACTIVATION_TOKEN");
        return sd_bus_message_append(message, "sha{sv}", "", page.get(), 2, "handle_token", "s",
                                     kToken, "activation_token", "s", token ? token : "");
      },
      [this](const platform::BusReply& reply) {
        if (!reply) portalDecided(Portal::cannot);
      });
  if (!call) return Portal::cannot;
  const auto loss = sessionBus_.watchConnection([this](bool isConnected) {
    if (!isConnected) portalDecided(Portal::cannot);
  });
  const auto limit =
      loop_.scheduleRepeating(kLongestChoice, [this] { portalDecided(Portal::decided); });
  while (portal_ == Portal::waiting)
    loop_.run();
  return portal_;
}

void PageOpener::portalDecided(Portal outcome) {
  portal_ = outcome;
  loop_.handOver();
}

void PageOpener::notify(const std::string& why) {
  const tidewell::Words& words = tidewell::Words::shown();
  // TRANSLATORS: the title of a notification.
  showNotification(sessionBus_,
                   {words.phrase("The history cannot be shown"), words.knownPhrase(why)});
  const auto limit = loop_.scheduleRepeating(kNotification, [this] { loop_.handOver(); });
  loop_.run();
}

}  // namespace staylit

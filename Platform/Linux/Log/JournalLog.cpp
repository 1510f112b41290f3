#include "Platform/Linux/Log/JournalLog.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>
#include <ctime>
#include <string_view>
#include <utility>

#define SD_JOURNAL_SUPPRESS_LOCATION
#include <systemd/sd-journal.h>

#include "Platform/Posix/Files/Descriptor.h"

namespace platform {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kPatience(100);
constexpr char kJournalSocket[] = "/run/systemd/journal/socket";

/// Waits until `file` can be written to without blocking. False after `deadline`.
bool isWritable(int file, steady_clock::time_point deadline) {
  pollfd wait{file, POLLOUT, 0};
  while (true) {
    const auto left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
    const int ready = poll(&wait, 1, static_cast<int>(std::max(left, milliseconds(0)).count()));
    if (ready < 0 && errno == EINTR) continue;
    // A pipe without a reader is ready too, but writing to it would end the program.
    return ready > 0 && wait.revents == POLLOUT;
  }
}

/// Whether a journal listens and has room. Without a journal, the library would report success.
/// With a journal that hangs, the library would wait for ever.
bool journalAccepts() {
  const Descriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, kJournalSocket, sizeof kJournalSocket);
  const auto* generic = reinterpret_cast<const sockaddr*>(&address);
  return socket && connect(socket.get(), generic, sizeof address) == 0 &&
         isWritable(socket.get(), steady_clock::now() + kPatience);
}

/// The journal does not change the text, although its interface takes no constant text.
iovec field(std::string& text) {
  return {text.data(), text.size()};
}

/// As the journal shows it, with the date: a log may be read days later. Safe from any thread.
std::string presentTime() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  std::array<char, 32> text{};
  if (::localtime_r(&now, &local) != nullptr) {
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local);
  }
  return text.data();
}

/// Writes the messages of one subsystem and category.
class JournalLogger : public tidewell::SystemLogger {
 public:
  JournalLogger(std::string subsystem, std::string category);

  /// Always true, because the journal keeps every message.
  bool isEnabled(tidewell::LogType type) override;
  void emit(tidewell::LogType type, const std::string& message) override;

 private:
  [[nodiscard]] bool sendToJournal(tidewell::LogType type, const std::string& message) const;
  void writeToStandardError(const std::string& message) const;

  std::string subsystem_;
  std::string category_;
};

JournalLogger::JournalLogger(std::string subsystem, std::string category)
    : subsystem_(std::move(subsystem)), category_(std::move(category)) {}

bool JournalLogger::isEnabled(tidewell::LogType /*type*/) {
  return true;
}

void JournalLogger::emit(tidewell::LogType type, const std::string& message) {
  if (!sendToJournal(type, message)) writeToStandardError(message);
}

bool JournalLogger::sendToJournal(tidewell::LogType type, const std::string& message) const {
  if (!journalAccepts()) return false;
  const int priority = type == tidewell::LogType::error ? LOG_ERR : LOG_INFO;
  std::string texts[] = {"MESSAGE=" + message, "PRIORITY=" + std::to_string(priority),
                         "SUBSYSTEM=" + subsystem_, "CATEGORY=" + category_};
  const iovec fields[] = {field(texts[0]), field(texts[1]), field(texts[2]), field(texts[3])};
  return sd_journal_sendv(fields, 4) == 0;
}

void JournalLogger::writeToStandardError(const std::string& message) const {
  const std::string line =
      presentTime() + " " + subsystem_ + " [" + category_ + "] " + message + "\n";
  const auto deadline = steady_clock::now() + kPatience;
  std::string_view rest = line;
  // A pipe that is ready takes PIPE_BUF bytes without blocking.
  while (!rest.empty() && isWritable(STDERR_FILENO, deadline)) {
    const std::string_view piece = rest.substr(0, PIPE_BUF);
    const ssize_t written = write(STDERR_FILENO, piece.data(), piece.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return;
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace

bool JournalLog::isListening() {
  return journalAccepts();
}

std::shared_ptr<tidewell::SystemLogger> JournalLog::makeLogger(const std::string& subsystem,
                                                               const std::string& category) {
  return std::make_shared<JournalLogger>(subsystem, category);
}

}  // namespace platform

#include "Platform/Posix/Files/PosixPrivateFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <string>
#include <system_error>
#include <utility>

#include "Platform/Posix/ErrorDescription.h"
#include "Platform/Posix/Files/Descriptor.h"
#include "Platform/Posix/Files/WholeWrite.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kModeOfOwnFile = 0600;

class AppendedFile : public tidewell::PrivateFile {
 public:
  explicit AppendedFile(Descriptor file) : file_(std::move(file)) {}

  std::string append(std::string_view bytes) override {
    if (isRemoved()) return "it was removed";
    return writeWhole(file_.get(), bytes) ? "" : describeError(errno);
  }

 private:
  [[nodiscard]] bool isRemoved() const {
    struct stat status {};
    return ::fstat(file_.get(), &status) == 0 && status.st_nlink == 0;
  }

  Descriptor file_;
};

std::int64_t ageOf(const fs::directory_entry& entry) {
  std::error_code error;
  const auto changed = entry.last_write_time(error);
  if (error) return 0;
  return std::chrono::floor<std::chrono::seconds>(fs::file_time_type::clock::now() - changed)
      .count();
}

}  // namespace

PosixPrivateFolder::PosixPrivateFolder(fs::path path, Trust trust)
    : path_(std::move(path)), trust_(trust) {}

std::vector<PosixPrivateFolder::Entry> PosixPrivateFolder::list() {
  std::vector<Entry> entries;
  std::error_code error;
  for (fs::directory_iterator place(path_, error), end; !error && place != end;
       place.increment(error)) {
    std::error_code failure;
    if (!place->is_regular_file(failure) || place->is_symlink(failure)) continue;
    const std::uint64_t size = place->file_size(failure);
    if (!failure) entries.push_back({place->path().filename(), size, ageOf(*place)});
  }
  std::ranges::sort(entries, {}, &Entry::name);
  return entries;
}

PosixPrivateFolder::Creation PosixPrivateFolder::create(const std::string& name) {
  OwnFolder folder =
      trust_ == Trust::own ? OwnFolder::makeAll(path_, describeError) : chosenFolder();
  if (!folder) return {nullptr, std::move(folder.error)};
  Descriptor file(::openat(folder.descriptor.get(), name.c_str(),
                           O_WRONLY | O_APPEND | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                           kModeOfOwnFile));
  if (!file) return {nullptr, describeError(errno)};
  return {std::make_unique<AppendedFile>(std::move(file)), ""};
}

OwnFolder PosixPrivateFolder::chosenFolder() const {
  Descriptor folder(::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  std::string error = folder ? "" : describeError(errno);
  return {std::move(folder), std::move(error)};
}

void PosixPrivateFolder::remove(const std::string& name) {
  std::error_code error;
  fs::remove(path_ / name, error);
}

}  // namespace platform

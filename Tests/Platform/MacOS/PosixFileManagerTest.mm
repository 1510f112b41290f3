#include "Platform/Posix/Tasks/PosixFileManager.h"

#include "Platform/MacOS/Text/LocalizedDescription.h"
#include "Platform/Posix/Files/HomeFolder.h"
#include "Tests/Platform/Tasks/FileManagerContract.h"

namespace platform {
namespace {

struct LocalizedFileManager : PosixFileManager {
  LocalizedFileManager() : PosixFileManager(lastingHomeFolder(), localizedDescription) {}
};

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, FileManagerContract, LocalizedFileManager);

}  // namespace
}  // namespace platform

#include "Platform/Posix/Tasks/SpawnedTaskLauncher.h"

#include "Platform/MacOS/Text/LocalizedDescription.h"
#include "Tests/Platform/Tasks/TaskContract.h"

namespace platform {
namespace {

struct LocalizedLauncher : SpawnedTaskLauncher {
  LocalizedLauncher() : SpawnedTaskLauncher(localizedDescription) {}
};

INSTANTIATE_TYPED_TEST_SUITE_P(Spawned, TaskContract, LocalizedLauncher);

}  // namespace
}  // namespace platform

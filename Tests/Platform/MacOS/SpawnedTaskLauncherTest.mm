#include "Platform/Posix/Tasks/SpawnedTaskLauncher.h"

#include "Tests/Platform/Tasks/TaskContract.h"

namespace platform {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(Spawned, TaskContract, SpawnedTaskLauncher);

}  // namespace
}  // namespace platform

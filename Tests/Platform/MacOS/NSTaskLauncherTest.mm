#include "Platform/MacOS/Tasks/NSTaskLauncher.h"

#include "Tests/Platform/Tasks/TaskContract.h"

namespace platform {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(Foundation, TaskContract, NSTaskLauncher);

}  // namespace
}  // namespace platform

#include "Tests/Platform/Processes/ProcessTableContract.h"

#include "Platform/Linux/Processes/LinuxProcessTable.h"
#include "Platform/Linux/Processes/ProcessTracker.h"
#include "Platform/Linux/Text/IcuText.h"
#include "Tests/Platform/Processes/NoApplications.h"

namespace platform {
namespace {

struct ProcTable {
  ProcFileSystem proc;
  KernelCpuClock clock;
  NoApplications applications;
  IcuText text;
  ProcessTracker tracker{ProcessTracker::Sources{proc, clock, applications, text}};
  LinuxProcessTable table{tracker};
};

INSTANTIATE_TYPED_TEST_SUITE_P(OfProc, ProcessTableContract, ProcTable);

}  // namespace
}  // namespace platform

// Built as the program's own modules are, and loaded by a test.

#include "StaylitBuildIdentity.h"

extern "C" __attribute__((visibility("default"))) int STAYLIT_OF_THIS_BUILD(staylitTestNumber)() {
  return 42;
}

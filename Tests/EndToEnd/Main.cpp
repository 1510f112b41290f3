#include <gtest/gtest.h>

#include "Tests/Platform/Support/ProcessNamespace.h"

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  return platform::testing::ProcessNamespace::run([] { return RUN_ALL_TESTS(); });
}

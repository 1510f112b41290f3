#include <gtest/gtest.h>

#include <QByteArray>
#include <QtGlobal>

#ifdef __SANITIZE_ADDRESS__
// The font library keeps what it has read of the machine's fonts.
extern "C" const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() {
  return "leak:libfontconfig\n";
}
#endif

int main(int argumentCount, char** arguments) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  // The tests must not depend on the desktop of whoever runs them.
  qputenv("QT_QPA_PLATFORMTHEME", "none");
  testing::InitGoogleTest(&argumentCount, arguments);
  return RUN_ALL_TESTS();
}

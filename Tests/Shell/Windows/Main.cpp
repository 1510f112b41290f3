#include <gtest/gtest.h>

#include <QByteArray>
#include <QtGlobal>

#ifdef __SANITIZE_ADDRESS__
// It keeps what it has read of the machine's fonts.
extern "C" const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() {
  return "leak:libfontconfig\n";
}
#endif

int main(int argumentCount, char** arguments) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  // The desktop of whoever runs the tests has no say in them.
  qputenv("QT_QPA_PLATFORMTHEME", "none");
  testing::InitGoogleTest(&argumentCount, arguments);
  return RUN_ALL_TESTS();
}

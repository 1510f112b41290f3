#include <gtest/gtest.h>

#include <QByteArray>
#include <QtGlobal>

int main(int argumentCount, char** arguments) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  // The desktop of whoever runs the tests has no say in them.
  qputenv("QT_QPA_PLATFORMTHEME", "none");
  testing::InitGoogleTest(&argumentCount, arguments);
  return RUN_ALL_TESTS();
}

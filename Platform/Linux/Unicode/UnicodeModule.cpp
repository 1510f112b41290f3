#include "Platform/Linux/Unicode/UnicodeModule.h"

#include "Platform/Linux/Unicode/IcuText.h"
#include "StaylitBuildIdentity.h"

extern "C" __attribute__((visibility("default"))) tidewell::Text* STAYLIT_OF_THIS_BUILD(
    staylitMakeText)() {
  return new platform::IcuText;
}

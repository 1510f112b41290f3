#include "Platform/Linux/Text/UnicodeModule.h"

#include "Platform/Linux/Text/IcuText.h"
#include "StaylitBuildIdentity.h"

extern "C" __attribute__((visibility("default"))) tidewell::Text* STAYLIT_OF_THIS_BUILD(
    staylitMakeText)() {
  return new platform::IcuText;
}

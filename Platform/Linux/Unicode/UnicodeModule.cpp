#include "Platform/Linux/Unicode/UnicodeModule.h"

#include "Platform/Linux/Unicode/IcuText.h"

extern "C" __attribute__((visibility("default"))) tidewell::Text* staylitMakeText() {
  return new platform::IcuText;
}

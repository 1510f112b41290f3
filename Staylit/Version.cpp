#include "Staylit/Version.h"

namespace staylit {

const char* programVersion() {
  return STAYLIT_VERSION;
}

}  // namespace staylit

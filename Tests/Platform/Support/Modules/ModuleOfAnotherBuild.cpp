// Stands for modules of other builds, whose functions must not be called.

#include <cstdlib>

extern "C" {

// As a build without an identity offered it.
__attribute__((visibility("default"))) void* staylitTestNumber() {
  std::abort();
}
__attribute__((visibility("default"))) void* staylitMakeWindowKit() {
  std::abort();
}
__attribute__((visibility("default"))) void* staylitMakeText() {
  std::abort();
}

// As another build offers it.
__attribute__((visibility("default"))) void* staylitMakeWindowKit_0123456789abcdef() {
  std::abort();
}
__attribute__((visibility("default"))) void* staylitMakeText_0123456789abcdef() {
  std::abort();
}

}  // extern "C"

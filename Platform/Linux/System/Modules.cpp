#include "Platform/Linux/System/Modules.h"

#include <dlfcn.h>

#include <filesystem>
#include <system_error>

#include "Tidewell/Log.h"

namespace platform {

void* loadFromModule(const std::string& file, const char* symbol) {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
  void* module = nullptr;
  for (const auto& folder : {program, program / "../lib/staylit"}) {
    const auto path = folder / file;
    if (!std::filesystem::exists(path, error)) continue;
    module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (module) break;
  }
  void* address = module ? dlsym(module, symbol) : nullptr;
  if (!address) {
    const char* why = dlerror();
    tidewell::Log::error("cannot load " + file + ": " + (why ? why : "no such file"));
  }
  return address;
}

}  // namespace platform

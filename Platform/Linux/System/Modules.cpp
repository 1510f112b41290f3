#include "Platform/Linux/System/Modules.h"

#include <dlfcn.h>

#include <filesystem>
#include <system_error>

#include "Tidewell/Log.h"

namespace platform {

std::filesystem::path moduleFile(const std::string& file) {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
  for (const auto& folder : {program, program / "../lib/staylit"}) {
    if (std::filesystem::exists(folder / file, error)) return folder / file;
  }
  return {};
}

void* loadFromModule(const std::string& file, const char* symbol) {
  const std::filesystem::path path = moduleFile(file);
  void* module = path.empty() ? nullptr : dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  void* address = module ? dlsym(module, symbol) : nullptr;
  if (!address) {
    const char* why = dlerror();
    tidewell::Log::error("cannot load " + file + ": " + (why ? why : "no such file"));
  }
  return address;
}

}  // namespace platform

#include "Platform/Linux/Modules/Modules.h"

#include <dlfcn.h>

#include <filesystem>
#include <system_error>

#include "StaylitBuildIdentity.h"
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

namespace {

ModuleFunction noFunction(const std::string& file, const std::string& why, bool isOfAnotherBuild) {
  const std::string line = "cannot load " + file + ": " + why;
  tidewell::Log::error(line);
  return {nullptr, isOfAnotherBuild, line};
}

}  // namespace

ModuleFunction loadFromModule(const std::string& file, const std::string& function) {
  const std::filesystem::path path = moduleFile(file);
  void* module = path.empty() ? nullptr : dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!module) {
    const char* why = path.empty() ? nullptr : dlerror();
    return noFunction(file, why ? why : "no such file", false);
  }
  void* address = dlsym(module, (function + "_" STAYLIT_BUILD_IDENTITY).c_str());
  if (address) return {address, false, {}};
  dlclose(module);
  return noFunction(file, "it is of another build than the program", true);
}

}  // namespace platform

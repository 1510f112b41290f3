#include <string>
#include <vector>

#include "Platform/MakePorts.h"
#include "Platform/Posix/StandardStreams.h"
#include "Staylit/AppKit/AppKitApplication.h"
#include "Staylit/AppMain.h"

int main(int argc, char** argv) {
  platform::prepareStandardStreams();
  @autoreleasepool {
    const auto ports = platform::makePorts();
    staylit::AppKitApplication application;
    const std::vector<std::string> arguments(argv, argv + argc);
    return staylit::AppMain(*ports, application).run(arguments);
  }
}

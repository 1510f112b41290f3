#include <string>
#include <vector>

#include "Platform/MakePorts.h"
#include "Platform/Posix/StandardStreams.h"
#include "Staylit/AppKit/AppKitApplication.h"
#include "Staylit/AppKit/AppKitUserInterface.h"
#include "Staylit/AppMain.h"

int main(int argc, char** argv) {
  platform::prepareStandardStreams();
  @autoreleasepool {
    const auto ports = platform::makePorts();
    staylit::AppKitApplication application;
    staylit::AppKitUserInterface userInterface;
    const std::vector<std::string> arguments(argv, argv + argc);
    return staylit::AppMain(*ports, application, userInterface).run(arguments);
  }
}

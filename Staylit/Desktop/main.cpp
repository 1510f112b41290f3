#include <memory>
#include <string>
#include <vector>

#include "Platform/Linux/LinuxPorts.h"
#include "Platform/Linux/Loop/EventLoop.h"
#include "Platform/Posix/StandardStreams.h"
#include "Staylit/AppMain.h"
#include "Staylit/Desktop/HeadlessApplication.h"

int main(int argc, char** argv) {
  platform::prepareStandardStreams();
  const auto loop = std::make_shared<platform::EventLoop>();
  const std::unique_ptr<tidewell::Ports> ports = platform::makeLinuxPorts(loop);
  staylit::HeadlessApplication application(*loop);
  return staylit::AppMain(*ports, application).run(std::vector<std::string>(argv, argv + argc));
}

#pragma once

#include <sys/types.h>

#include <filesystem>
#include <vector>

#include "Platform/Posix/Files/Descriptor.h"

/// Many processes under a hundred names, a tenth of them awake, and connections over loopback.
/// All of it ends with this object. With CROWD_GROUPS=FOLDER in the environment, a folder of the
/// unified hierarchy, the processes of each name are in a control group of their own below it.
class Crowd {
 public:
  Crowd(int processes, int sockets);
  ~Crowd();
  Crowd(const Crowd&) = delete;
  Crowd& operator=(const Crowd&) = delete;

 private:
  void connectPairs(int pairs);
  void makeGroups();

  std::filesystem::path folder_;
  platform::Descriptor membersInput_;  ///< They end when it is closed, with us or before.
  std::vector<pid_t> members_;
  std::vector<std::filesystem::path> groups_;  ///< One for each name, or none.
  std::vector<platform::Descriptor> sockets_;
};

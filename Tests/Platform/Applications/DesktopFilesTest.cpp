#include "Platform/Linux/Applications/DesktopFiles.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Tests/Platform/Support/ScopedEnvironment.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

/// A system with the user's folder, a folder for all users, and programs.
class Desktop {
 public:
  /// Writes a desktop file; `more` are further lines.
  void addEntry(const std::string& file, const std::string& name, const std::string& more = "") {
    root_.write(file, "[Desktop Entry]\nType=Application\nName=" + name + "\n" + more);
    settle();
  }

  std::string addProgram(const std::string& name) {
    const std::string path = root_.write(name, "");
    fs::permissions(path, fs::perms::owner_all);
    return fs::canonical(path);
  }

  void addLink(const std::string& name, const std::string& target) {
    fs::create_directories(fs::path(root_.path(name)).parent_path());
    fs::create_symlink(target, root_.path(name));
  }

  [[nodiscard]] std::string path(const std::string& name) const { return root_.path(name); }

  void remove(const std::string& name) {
    fs::remove_all(root_.path(name));
    settle();
  }

  DesktopFiles files(const std::string& locale = "") {
    return DesktopFiles({{root_.path("user"), root_.path("system")},
                         {root_.path("bin"), root_.path("bin2")},
                         locale});
  }

 private:
  /// Gives each folder a different time in the past, as if its changes were long ago.
  void settle() {
    for (const auto& entry : fs::recursive_directory_iterator(root_.path())) {
      if (!entry.is_directory() || entry.is_symlink()) continue;
      ++seconds_;
      const timespec times[2] = {{seconds_, 0}, {seconds_, 0}};
      utimensat(AT_FDCWD, entry.path().c_str(), times, 0);
    }
  }

  testing::TemporaryFolder root_;
  time_t seconds_ = 1'000'000'000;
};

std::string nameOf(const std::optional<DesktopApplication>& application) {
  return application ? application->localizedName : "(none)";
}

std::string idOf(const std::optional<DesktopApplication>& application) {
  return application ? application->id : "(none)";
}

TEST(DesktopFiles, CleanAnIdThatIsNoText) {
  Desktop desktop;
  const std::string program = desktop.addProgram("bin/tool");
  desktop.addEntry("system/a\x1B]0;x\x07\xFF.desktop", "Tool", "Exec=" + program + "\n");
  DesktopFiles files = desktop.files();
  EXPECT_EQ(idOf(files.findByProgram(program)), "a\uFFFD]0;x\uFFFD\uFFFD");
}

TEST(DesktopFiles, WalkAFolderWithLinksToItselfOnce) {
  Desktop desktop;
  desktop.addEntry("system/tool.desktop", "Tool");
  for (const char* link : {"a", "b", "c", "d", "e", "f"}) {
    desktop.addLink(std::string("system/") + link, ".");
  }
  DesktopFolders folders({desktop.path("system")});
  folders.scan();
  EXPECT_EQ(folders.fileById().size(), 1U);
  EXPECT_TRUE(folders.fileById().contains("tool"));
}

TEST(DesktopFiles, WalkARealFolderByItsOwnNameEvenIfALinkComesFirst) {
  Desktop desktop;
  desktop.addEntry("system/kde/okular.desktop", "Okular");
  desktop.addLink("user/a", desktop.path("system"));
  desktop.addLink("user/b", desktop.path("system/kde"));
  DesktopFiles files = desktop.files();
  EXPECT_EQ(nameOf(files.find("kde-okular")), "Okular");
  EXPECT_EQ(nameOf(files.find("b-okular")), "(none)");
}

TEST(DesktopFiles, FollowALinkToAFolderThatLiesElsewhere) {
  Desktop desktop;
  desktop.addEntry("elsewhere/okular.desktop", "Okular");
  desktop.addLink("user/kde", desktop.path("elsewhere"));
  EXPECT_EQ(nameOf(desktop.files().find("kde-okular")), "Okular");
}

TEST(DesktopFiles, StopWalkingWhenThereAreFarTooManyFiles) {
  Desktop desktop;
  for (int number = 0; number < 1100; ++number) {
    fs::create_directories(desktop.path("system/" + std::to_string(number)));
  }
  DesktopFolders folders({desktop.path("system")});
  folders.scan();
  EXPECT_EQ(folders.folderCount(), 1000U);
}

TEST(DesktopFiles, FindAnApplicationByItsId) {
  Desktop desktop;
  desktop.addEntry("system/org.gnome.Nautilus.desktop", "Files");
  DesktopFiles files = desktop.files();
  EXPECT_EQ(nameOf(files.find("org.gnome.Nautilus")), "Files");
  EXPECT_EQ(idOf(files.find("org.gnome.Nautilus")), "org.gnome.Nautilus");
  EXPECT_EQ(files.find("org.gnome.nautilus"), std::nullopt);
  EXPECT_EQ(files.find(""), std::nullopt);
}

TEST(DesktopFiles, NameApplicationsInTheUsersLanguage) {
  Desktop desktop;
  desktop.addEntry("system/a.desktop", "Files", "Name[de]=Dateien\n");
  DesktopFiles files = desktop.files("de_AT.UTF-8");
  EXPECT_EQ(nameOf(files.find("a")), "Dateien");
}

TEST(DesktopFiles, PreferTheUsersEntry) {
  Desktop desktop;
  desktop.addEntry("system/a.desktop", "System's");
  desktop.addEntry("user/a.desktop", "User's");
  DesktopFiles files = desktop.files();
  EXPECT_EQ(nameOf(files.find("a")), "User's");
}

TEST(DesktopFiles, LetAHiddenEntryMaskOthers) {
  Desktop desktop;
  desktop.addProgram("bin/a");
  desktop.addEntry("system/a.desktop", "System's", "Exec=a\n");
  desktop.addEntry("user/a.desktop", "User's", "Exec=a\nHidden=true\n");
  DesktopFiles files = desktop.files();
  EXPECT_EQ(files.find("a"), std::nullopt);
  EXPECT_EQ(files.findByProgram(fs::canonical(desktop.path("bin/a")).string()), std::nullopt);
}

TEST(DesktopFiles, JoinSubFoldersIntoTheId) {
  Desktop desktop;
  desktop.addEntry("system/kde4/sub/okular.desktop", "Okular");
  DesktopFiles files = desktop.files();
  EXPECT_EQ(nameOf(files.find("kde4-sub-okular")), "Okular");
  EXPECT_EQ(files.find("okular"), std::nullopt);
}

TEST(DesktopFiles, LeaveOutWhatIsNoApplication) {
  Desktop desktop;
  desktop.addEntry("system/nameless.desktop", "");
  desktop.addEntry("system/link.desktop", "Link", "Type=Link\n");
  desktop.addEntry("system/other.txt", "Other");
  desktop.addEntry("system/.desktop", "Nothing");
  DesktopFiles files = desktop.files();
  for (const char* id : {"nameless", "link", "other", "other.txt", ""}) {
    EXPECT_EQ(files.find(id), std::nullopt) << id;
  }
}

TEST(DesktopFiles, LeaveOutWhatCannotBeRead) {
  Desktop desktop;
  desktop.addEntry("system/good.desktop", "Good");
  mkfifo(desktop.path("system/pipe.desktop").c_str(), 0600);
  fs::create_directory(desktop.path("system/folder.desktop"));
  desktop.addLink("system/dangling.desktop", "nowhere");
  desktop.addLink("system/circle", ".");
  DesktopFiles files = desktop.files();
  for (const char* id : {"pipe", "folder", "dangling"}) {
    EXPECT_EQ(files.find(id), std::nullopt) << id;
  }
  EXPECT_EQ(nameOf(files.find("good")), "Good");
  EXPECT_EQ(files.findByProgram("/x"), std::nullopt);
}

TEST(DesktopFiles, FindNothingWithoutAnyFolder) {
  Desktop desktop;
  DesktopFiles files = desktop.files();
  EXPECT_EQ(files.find("a"), std::nullopt);
  EXPECT_EQ(files.findByProgram("/usr/bin/a"), std::nullopt);
}

TEST(DesktopFiles, FindAnApplicationByItsProgram) {
  Desktop desktop;
  const std::string program = desktop.addProgram("bin2/editor");
  desktop.addEntry("system/editor.desktop", "Editor", "Exec=editor %F\n");
  DesktopFiles files = desktop.files();
  EXPECT_EQ(idOf(files.findByProgram(program)), "editor");
  EXPECT_EQ(files.findByProgram("editor"), std::nullopt);
  EXPECT_EQ(files.findByProgram("/usr/bin/other"), std::nullopt);
}

TEST(DesktopFiles, LookForAProgramInTheOrderOfThePath) {
  Desktop desktop;
  const std::string first = desktop.addProgram("bin/editor");
  const std::string second = desktop.addProgram("bin2/editor");
  desktop.addEntry("system/editor.desktop", "Editor", "Exec=editor\n");
  DesktopFiles files = desktop.files();
  EXPECT_EQ(idOf(files.findByProgram(first)), "editor");
  EXPECT_EQ(idOf(files.findByProgram(second)), "(none)");
}

TEST(DesktopFiles, FollowLinksToTheProgram) {
  Desktop desktop;
  const std::string program = desktop.addProgram("lib/browser/browser-bin");
  desktop.addLink("bin/browser", "../lib/browser/browser-bin");
  desktop.addEntry("system/browser.desktop", "Browser", "Exec=browser %u\n");
  DesktopFiles files = desktop.files();
  EXPECT_EQ(idOf(files.findByProgram(program)), "browser");
}

TEST(DesktopFiles, TakeAProgramWithAQuotedPath) {
  Desktop desktop;
  const std::string program = desktop.addProgram("Two Words/run");
  desktop.addEntry("system/a.desktop", "A", "Exec=\"" + program + "\" --x\n");
  DesktopFiles files = desktop.files();
  EXPECT_EQ(idOf(files.findByProgram(program)), "a");
}

TEST(DesktopFiles, FindAnApplicationByTheProgramInItsTryExec) {
  Desktop desktop;
  const std::string program = desktop.addProgram("bin/real");
  desktop.addProgram("bin/sh");
  desktop.addEntry("system/a.desktop", "A", "Exec=sh -c real\nTryExec=real\n");
  DesktopFiles files = desktop.files();
  EXPECT_EQ(idOf(files.findByProgram(program)), "a");
  EXPECT_EQ(idOf(files.findByProgram(fs::canonical(desktop.path("bin/sh")).string())), "(none)");
}

TEST(DesktopFiles, LeaveTerminalProgramsOut) {
  Desktop desktop;
  const std::string program = desktop.addProgram("bin/htop");
  desktop.addEntry("system/htop.desktop", "Htop", "Exec=htop\nTerminal=true\n");
  DesktopFiles files = desktop.files();
  EXPECT_EQ(idOf(files.findByProgram(program)), "(none)");
  EXPECT_EQ(idOf(files.find("htop")), "htop");
}

TEST(DesktopFiles, LeaveInterpretersOut) {
  Desktop desktop;
  const std::string python = desktop.addProgram("bin/python3.11");
  desktop.addLink("bin/tool", "python3.11");
  desktop.addEntry("system/a.desktop", "A", "Exec=python3.11 /opt/a.py\n");
  desktop.addEntry("system/b.desktop", "B", "Exec=tool\n");
  DesktopFiles files = desktop.files();
  EXPECT_EQ(idOf(files.findByProgram(python)), "(none)");
}

TEST(DesktopFiles, LeaveOutWhatIsNoProgram) {
  Desktop desktop;
  const std::string program = desktop.addProgram("bin/a");
  fs::permissions(program, fs::perms::owner_read);
  fs::create_directory(desktop.path("bin/b"));
  desktop.addEntry("system/a.desktop", "A", "Exec=a\n");
  desktop.addEntry("system/b.desktop", "B", "Exec=b\n");
  desktop.addEntry("system/c.desktop", "C", "Exec=\n");
  DesktopFiles files = desktop.files();
  EXPECT_EQ(idOf(files.findByProgram(program)), "(none)");
  EXPECT_EQ(idOf(files.findByProgram(desktop.path("bin/b"))), "(none)");
  EXPECT_EQ(idOf(files.findByProgram("")), "(none)");
}

TEST(DesktopFiles, PreferTheEntryThatStandsForTheProgram) {
  Desktop desktop;
  const std::string program = desktop.addProgram("bin/office");
  desktop.addEntry("system/calc.desktop", "Calc", "Exec=office --calc %U\n");
  desktop.addEntry("system/office-start.desktop", "Office", "Exec=office %U\n");
  desktop.addEntry("system/a-handler.desktop", "Handler", "Exec=office\nNoDisplay=true\n");
  DesktopFiles files = desktop.files();
  EXPECT_EQ(idOf(files.findByProgram(program)), "office-start");
}

TEST(DesktopFiles, SeeNewAndRemovedApplicationsAfterARefresh) {
  Desktop desktop;
  const std::string program = desktop.addProgram("bin/a");
  desktop.addEntry("system/old.desktop", "Old", "Exec=a\n");
  DesktopFiles files = desktop.files();
  EXPECT_EQ(idOf(files.find("old")), "old");
  EXPECT_EQ(idOf(files.findByProgram(program)), "old");
  desktop.remove("system/old.desktop");
  desktop.addEntry("system/sub/new.desktop", "New", "Exec=a\n");
  EXPECT_EQ(idOf(files.find("sub-new")), "(none)");
  EXPECT_EQ(idOf(files.find("old")), "old");
  files.refresh();
  EXPECT_EQ(idOf(files.find("sub-new")), "sub-new");
  EXPECT_EQ(idOf(files.find("old")), "(none)");
  EXPECT_EQ(idOf(files.findByProgram(program)), "sub-new");
}

TEST(DesktopFiles, SeeAFolderThatAppears) {
  Desktop desktop;
  DesktopFiles files = desktop.files();
  EXPECT_EQ(idOf(files.find("a")), "(none)");
  desktop.addEntry("user/a.desktop", "A");
  files.refresh();
  EXPECT_EQ(idOf(files.find("a")), "a");
}

TEST(DesktopFiles, KeepWhatTheyReadWhileNothingChanges) {
  Desktop desktop;
  desktop.addEntry("system/a.desktop", "A");
  DesktopFiles files = desktop.files();
  EXPECT_EQ(nameOf(files.find("a")), "A");
  std::ofstream(desktop.path("system/a.desktop")) << "[Desktop Entry]\nType=Application\nName=B\n";
  files.refresh();
  EXPECT_EQ(nameOf(files.find("a")), "A");
}

TEST(DesktopFiles, SeeAChangeInTheSameMomentAsTheScan) {
  Desktop desktop;
  desktop.addEntry("system/a.desktop", "A");
  const std::string folder = desktop.path("system");
  const timespec now[2] = {{0, UTIME_NOW}, {0, UTIME_NOW}};
  utimensat(AT_FDCWD, folder.c_str(), now, 0);
  struct stat status {};
  stat(folder.c_str(), &status);
  DesktopFiles files = desktop.files();
  EXPECT_EQ(idOf(files.find("b")), "(none)");
  std::ofstream(folder + "/b.desktop") << "[Desktop Entry]\nType=Application\nName=B\n";
  const timespec same[2] = {status.st_atim, status.st_mtim};
  utimensat(AT_FDCWD, folder.c_str(), same, 0);
  files.refresh();
  EXPECT_EQ(idOf(files.find("b")), "b");
}

TEST(ApplicationPlaces, AreThoseThatTheEnvironmentNames) {
  const testing::ScopedEnvironment home("HOME", "/home/user");
  const testing::ScopedEnvironment own("XDG_DATA_HOME", nullptr);
  const testing::ScopedEnvironment shared("XDG_DATA_DIRS",
                                          "/usr/share/:/var/lib/flatpak/exports/share");
  const testing::ScopedEnvironment path("PATH", "/a:b:/c");
  const testing::ScopedEnvironment all("LC_ALL", "de_AT.UTF-8");
  const ApplicationPlaces places = ApplicationPlaces::ofEnvironment();
  EXPECT_EQ(
      places.applicationFolders,
      (std::vector<fs::path>{"/home/user/.local/share/applications", "/usr/share/applications",
                             "/var/lib/flatpak/exports/share/applications",
                             "/home/user/.local/share/flatpak/exports/share/applications",
                             "/var/lib/snapd/desktop/applications"}));
  EXPECT_EQ(places.programFolders, (std::vector<fs::path>{"/a", "/c"}));
  EXPECT_EQ(places.locale, "de_AT.UTF-8");
}

}  // namespace
}  // namespace platform

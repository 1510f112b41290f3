#include "Platform/Linux/Applications/DesktopEntry.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

using Texts = std::vector<std::string>;

DesktopEntry parsed(std::string_view text, const Texts& variants = {}) {
  return DesktopEntry::parse(text, variants).value_or(DesktopEntry());
}

std::string nameFor(std::string_view locale, std::string_view lines) {
  return parsed("[Desktop Entry]\n" + std::string(lines), DesktopEntry::localeVariants(locale))
      .name;
}

TEST(DesktopEntry, ReadsItsSettings) {
  const DesktopEntry entry = parsed(
      "# made by hand\n[Desktop Entry]\nType=Application\nName=Two Words\n"
      "Exec=editor %U\nTryExec=editor\nTerminal=true\nNoDisplay=true\nHidden=true\n");
  EXPECT_EQ(entry.type, "Application");
  EXPECT_EQ(entry.name, "Two Words");
  EXPECT_EQ(entry.exec, "editor %U");
  EXPECT_EQ(entry.tryExec, "editor");
  EXPECT_TRUE(entry.terminal);
  EXPECT_TRUE(entry.noDisplay);
  EXPECT_TRUE(entry.hidden);
}

TEST(DesktopEntry, IsVisibleAndOutsideATerminalByDefault) {
  const DesktopEntry entry = parsed("[Desktop Entry]\n");
  EXPECT_FALSE(entry.terminal);
  EXPECT_FALSE(entry.noDisplay);
  EXPECT_FALSE(entry.hidden);
  EXPECT_EQ(entry.name, "");
}

TEST(DesktopEntry, TakesOnlyTheStandardAndTheOldSpellingForTrue) {
  EXPECT_TRUE(parsed("[Desktop Entry]\nTerminal=1\n").terminal);
  for (const char* other : {"false", "0", "True", "yes", ""}) {
    EXPECT_FALSE(parsed(std::string("[Desktop Entry]\nTerminal=") + other + "\n").terminal)
        << other;
  }
}

TEST(DesktopEntry, IsAbsentWithoutItsGroup) {
  for (const char* text : {"", "Name=x\n", "[Other]\nName=x\n", "[desktop entry]\nName=x\n",
                           "[Desktop Entry\nName=x\n",
                           "\x7f"
                           "ELF",
                           "<html>"}) {
    EXPECT_EQ(DesktopEntry::parse(text, {}), std::nullopt) << text;
  }
}

TEST(DesktopEntry, LeavesOtherGroupsOut) {
  const DesktopEntry entry = parsed(
      "[Before]\nName=before\n[Desktop Entry]\nName=real\n"
      "[Desktop Action new]\nName=New Window\nExec=x --new\n[Desktop Entry]\nName=again\n");
  EXPECT_EQ(entry.name, "real");
  EXPECT_EQ(entry.exec, "");
}

TEST(DesktopEntry, ToleratesBlanksAndForeignLineEnds) {
  const DesktopEntry entry =
      parsed("\r\n  [Desktop Entry]  \r\n\tName = A b \r\nno setting\r\n=x\r\nExec=a");
  EXPECT_EQ(entry.name, "A b");
  EXPECT_EQ(entry.exec, "a");
}

TEST(DesktopEntry, UndoesEscapes) {
  const DesktopEntry entry = parsed(
      "[Desktop Entry]\nName=a\\sb\\\\c\nExec=\"/opt/A\\sB/c\" \\\\$x "
      "\\q\nTryExec=a\\tb\\nc\\rd\\");
  EXPECT_EQ(entry.name, "a b\\c");
  EXPECT_EQ(entry.exec, "\"/opt/A B/c\" \\$x \\q");
  EXPECT_EQ(entry.tryExec, "a\tb\nc\rd\\");
}

TEST(DesktopEntry, TakesTheNameInTheBestLanguage) {
  constexpr char lines[] =
      "Name[de]=Datei\nName=File\nName[de_AT]=Datei "
      "(A)\nName[fr]=Fichier\nName[sr@latin]=Datoteka\n"
      "Name[sr]=Датотека\n";
  EXPECT_EQ(nameFor("de_AT.UTF-8", lines), "Datei (A)");
  EXPECT_EQ(nameFor("de_DE.UTF-8", lines), "Datei");
  EXPECT_EQ(nameFor("de", lines), "Datei");
  EXPECT_EQ(nameFor("fr_CA", lines), "Fichier");
  EXPECT_EQ(nameFor("sr_RS@latin", lines), "Datoteka");
  EXPECT_EQ(nameFor("sr_RS.UTF-8", lines), "Датотека");
  EXPECT_EQ(nameFor("ja_JP.UTF-8", lines), "File");
  EXPECT_EQ(nameFor("C.UTF-8", lines), "File");
  EXPECT_EQ(nameFor("", lines), "File");
}

TEST(DesktopEntry, FallsBackFromAnEmptyTranslation) {
  EXPECT_EQ(nameFor("de", "Name=File\nName[de]=\n"), "File");
}

TEST(DesktopEntry, LeavesOutKeysThatOnlyLookLikeAName) {
  EXPECT_EQ(nameFor("de", "Name[de=x\nNamespace=y\nName[=z\nName]=w\n"), "");
}

TEST(DesktopEntry, MakesANameSafeToShow) {
  EXPECT_EQ(nameFor("", "Name=a\xFF\\nb\x1B[1m\n"), "a\uFFFD\uFFFDb\uFFFD[1m");
}

TEST(DesktopEntry, KnowsTheVariantsOfALocale) {
  EXPECT_EQ(DesktopEntry::localeVariants("de_AT.UTF-8@euro"),
            (Texts{"de_AT@euro", "de_AT", "de@euro", "de"}));
  EXPECT_EQ(DesktopEntry::localeVariants("de_AT"), (Texts{"de_AT", "de"}));
  EXPECT_EQ(DesktopEntry::localeVariants("sr@latin"), (Texts{"sr@latin", "sr"}));
  EXPECT_EQ(DesktopEntry::localeVariants("de.UTF-8"), Texts{"de"});
  for (const char* none : {"", "C", "POSIX", "C.UTF-8", ".UTF-8", "@x"}) {
    EXPECT_EQ(DesktopEntry::localeVariants(none), Texts{}) << none;
  }
}

}  // namespace
}  // namespace platform

#include "Tidewell/Words.h"

#include <gtest/gtest.h>

#include <string>

#include "Tests/Fakes/FakeTranslator.h"

namespace tidewell {
namespace {

std::string awakeFor(const std::string& app) {
  return Words::shown().phrase("Awake for {app}", {{"app", app}});
}

std::string copied(const std::string& count, const std::string& place) {
  return Words::shown().phrase("{count} copied to {place}", {{"count", count}, {"place", place}});
}

std::string ignored(std::int64_t count) {
  return Words::shown().phraseFor(count, "{count} app ignored", "{count} apps ignored");
}

TEST(Words, AreTheSourceWithoutATranslator) {
  EXPECT_STREQ(Words::shown().phrase("Paused"), "Paused");
  EXPECT_EQ(awakeFor("make"), "Awake for make");
  EXPECT_EQ(ignored(1), "1 app ignored");
  EXPECT_EQ(ignored(0), "0 apps ignored");
  EXPECT_EQ(ignored(7), "7 apps ignored");
  EXPECT_EQ(Words::shown().knownPhrase("no display"), "no display");
}

TEST(Words, AreTranslatedWhereTheyAreShownAndNowhereElse) {
  FakeTranslator translator;
  translator.translate("Paused", "Angehalten");
  EXPECT_STREQ(Words::shown().phrase("Paused"), "Angehalten");
  EXPECT_STREQ(Words::source().phrase("Paused"), "Paused");
  EXPECT_STREQ(Words::shown().phrase("Resume"), "Resume") << "there is no translation";
}

TEST(Words, AreTheSourceAgainWhenTheTranslatorIsGone) {
  {
    FakeTranslator translator;
    translator.translate("Paused", "Angehalten");
  }
  EXPECT_STREQ(Words::shown().phrase("Paused"), "Paused");
}

TEST(Words, StandInTheOrderOfTheirLanguage) {
  FakeTranslator translator;
  translator.translate("{count} copied to {place}", "{place} hat {count}");
  EXPECT_EQ(copied("3", "disk"), "disk hat 3");
}

TEST(Words, MayStandTwice) {
  FakeTranslator translator;
  translator.translate("Awake for {app}", "{app}, {app}");
  EXPECT_EQ(awakeFor("make"), "make, make");
}

TEST(Words, OfADamagedTranslationAreTheSource) {
  FakeTranslator translator;
  for (const char* damaged : {"wach", "wach: {programm}", "wach: {app", "wach: app}", "wach: {}",
                              "wach: {{app}}", "{app} } wach", "{app} {", "", "{app} {count}"}) {
    translator.translate("Awake for {app}", damaged);
    EXPECT_EQ(awakeFor("make"), "Awake for make") << damaged;
  }
}

TEST(Words, ThatArePutInAreNoForms) {
  EXPECT_EQ(awakeFor("{app}"), "Awake for {app}");
  EXPECT_EQ(awakeFor("{"), "Awake for {");
  FakeTranslator translator;
  translator.translate("{count} copied to {place}", "{place}: {count}");
  EXPECT_EQ(copied("{place}", "{nobody}"), "{nobody}: {place}");
}

TEST(Words, TakeTheFormForTheirNumber) {
  FakeTranslator translator;
  translator.markAll("<", ">");
  EXPECT_EQ(ignored(1), "<1 app ignored>");
  EXPECT_EQ(ignored(2), "<2 apps ignored>");
  EXPECT_EQ(ignored(-2), "<-2 apps ignored>");
}

TEST(Words, ForANumberMayDoWithoutIt) {
  FakeTranslator translator;
  translator.translate("{count} app ignored", "eine");
  EXPECT_EQ(ignored(1), "eine");
}

TEST(Words, ForANumberAreTheSourceWhereTheTranslationIsDamaged) {
  FakeTranslator translator;
  translator.translate("{count} app ignored", "{anzahl} ignoriert");
  EXPECT_EQ(ignored(1), "1 app ignored");
  EXPECT_EQ(ignored(2), "2 apps ignored");
  const auto more = [] {
    return Words::shown().phraseFor(2, "{app} +{count}", "{app} +{count}", {{"app", "make"}});
  };
  translator.translate("{app} +{count}", "{count}");
  EXPECT_EQ(more(), "make +2") << "only the number may be missing";
}

TEST(Words, ThatNobodyTranslatesStayAsTheyAre) {
  FakeTranslator translator;
  translator.translate("no display", "kein Bildschirm");
  EXPECT_EQ(Words::shown().knownPhrase("no display"), "kein Bildschirm");
  EXPECT_EQ(Words::shown().knownPhrase("No such file: {x}"), "No such file: {x}");
}

TEST(Words, ThatAreEmptyStayEmpty) {
  FakeTranslator translator;
  translator.translate("", "the head of a catalogue");
  EXPECT_STREQ(Words::shown().phrase(""), "");
  EXPECT_EQ(Words::shown().knownPhrase(""), "");
}

}  // namespace
}  // namespace tidewell

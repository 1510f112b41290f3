#include "Platform/Linux/Text/GettextTranslator.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <clocale>
#include <cstring>
#include <string>

#include "Tests/Platform/Support/MadeUpLocale.h"

namespace platform {
namespace {

using testing::MadeUpLocale;
using testing::ScopedEnvironment;
using tidewell::Words;

constexpr const char* kIdle = "Idle — your Mac can sleep";
constexpr const char* kIdleOfComputers = "Idle — your computer can sleep";

class GettextTranslatorTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (const auto obstacle = MadeUpLocale::obstacle()) GTEST_SKIP() << *obstacle;
  }
  void TearDown() override { Words::setTranslator(nullptr); }

  /// The catalogues that were made of po/, in this locale.
  static void useLanguage() { Words::setTranslator(GettextTranslator::from(STAYLIT_CATALOGUES)); }
  static void useTestLanguage() {
    Words::setTranslator(GettextTranslator::from(STAYLIT_TEST_CATALOGUES));
  }
};

TEST_F(GettextTranslatorTest, EnglishSpeaksOfComputers) {
  for (const char* name : {"en_US.UTF-8", "en_GB.UTF-8", "en_US"}) {
    const MadeUpLocale english(name);
    useLanguage();
    EXPECT_STREQ(Words::shown().phrase(kIdle), kIdleOfComputers) << name;
    EXPECT_STREQ(Words::shown().phrase("Paused"), "Paused") << name;
    EXPECT_STREQ(Words::source().phrase(kIdle), kIdle) << name;
  }
}

TEST_F(GettextTranslatorTest, ALanguageWithoutACatalogueIsFollowedByEnglish) {
  const MadeUpLocale made("xx_XX.UTF-8");
  useLanguage();
  EXPECT_STREQ(Words::shown().phrase(kIdle), kIdleOfComputers);
}

TEST_F(GettextTranslatorTest, TheListOfLanguagesDecidesWhereTheUserHasOne) {
  const MadeUpLocale german("de_DE.UTF-8");
  const ScopedEnvironment languages("LANGUAGE", "en_GB:de");
  useLanguage();
  EXPECT_STREQ(Words::shown().phrase(kIdle), kIdleOfComputers);
  EXPECT_STREQ(Words::shown().phrase("Paused"), "Paused") << "English has all texts";
}

TEST_F(GettextTranslatorTest, TheSourceIsShownInTheLocaleOfTheSource) {
  for (const char* name : {"C", "POSIX", "C.UTF-8", ""}) {
    const ScopedEnvironment all("LC_ALL", name);
    const ScopedEnvironment messages("LC_MESSAGES", nullptr);
    const ScopedEnvironment language("LANG", nullptr);
    const ScopedEnvironment languages("LANGUAGE", "en");
    EXPECT_EQ(GettextTranslator::from(STAYLIT_CATALOGUES), nullptr) << name;
  }
}

TEST_F(GettextTranslatorTest, TheSourceIsShownInALocaleThatIsNotInstalled) {
  const ScopedEnvironment all("LC_ALL", "qq_QQ.UTF-8");
  EXPECT_EQ(GettextTranslator::from(STAYLIT_CATALOGUES), nullptr);
}

TEST_F(GettextTranslatorTest, TranslatesWithoutChangingTheLocaleOfTheProcess) {
  const MadeUpLocale made("xx_XX.UTF-8");
  useTestLanguage();
  EXPECT_STREQ(Words::shown().phrase("Paused"), "مؤقت ä") << "in UTF-8";
  EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
  EXPECT_STREQ(std::strerror(ENOENT), "No such file or directory");
}

TEST_F(GettextTranslatorTest, TakesTheFormThatTheLanguageHasForANumber) {
  const MadeUpLocale made("xx_XX.UTF-8");
  useTestLanguage();
  const auto ignored = [](std::int64_t count) {
    return Words::shown().phraseFor(count, "{count} ignored", "{count} ignored");
  };
  EXPECT_EQ(ignored(1), "one");
  EXPECT_EQ(ignored(4), "few: 4");
  EXPECT_EQ(ignored(5), "many: 5");
}

TEST_F(GettextTranslatorTest, ADamagedTextOfACatalogueIsTheSource) {
  const MadeUpLocale made("xx_XX.UTF-8");
  useTestLanguage();
  EXPECT_EQ(Words::shown().phrase("Awake for {app}", {{"app", "make"}}), "Awake for make");
}

TEST_F(GettextTranslatorTest, ATextThatTheCatalogueLacksIsTheSource) {
  const MadeUpLocale made("xx_XX.UTF-8");
  useTestLanguage();
  EXPECT_STREQ(Words::shown().phrase("Resume"), "Resume");
  EXPECT_EQ(Words::shown().knownPhrase("No such file"), "No such file");
}

}  // namespace
}  // namespace platform

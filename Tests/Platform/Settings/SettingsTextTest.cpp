#include "Platform/Linux/Settings/SettingsText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <variant>

#include "Tests/Platform/Settings/IntegerValue.h"

namespace platform {
namespace {

using tidewell::PropertyDictionary;
using tidewell::PropertyValue;
using Texts = std::vector<std::string>;

PropertyValue text(const char* characters) {
  return std::string(characters);
}

PropertyDictionary valuesOf(std::string_view settings) {
  const SettingsValues parsed = parseSettings(settings);
  EXPECT_EQ(parsed.damage, "") << settings;
  return parsed.values;
}

std::string edited(std::string_view settings, std::string_view key, const PropertyValue& value) {
  return withSettings(settings, {{std::string(key), value}}).value_or("(not possible)");
}

TEST(SettingsText, ReadsEachTypeOfSetting) {
  EXPECT_EQ(valuesOf("graceSeconds = 90\ncpuThresholdPercent = 12.5\nkeepScreenOn = true\n"
                     "ignoredApps = ['b', \"a\"]\nname = 'x'\nempty = []\n"),
            (PropertyDictionary{{"graceSeconds", integer(90)},
                                {"cpuThresholdPercent", 12.5},
                                {"keepScreenOn", true},
                                {"ignoredApps", Texts{"b", "a"}},
                                {"name", text("x")},
                                {"empty", Texts{}}}));
}

TEST(SettingsText, ReadsTheKeysOfTheHistorysTableUnderTheirFullNames) {
  const PropertyDictionary values{
      {"graceSeconds", integer(60)}, {"history", std::monostate()}, {"history.enabled", false}};
  EXPECT_EQ(valuesOf("graceSeconds = 60\n[history]\nenabled = false\n"), values);
  EXPECT_EQ(valuesOf("graceSeconds = 60\nhistory = {enabled = false}\n"), values);
  EXPECT_EQ(valuesOf("graceSeconds = 60\nhistory.enabled = false\n"), values);
}

TEST(SettingsText, KeepsTheHistorysTableWhenItWritesSettings) {
  EXPECT_EQ(edited("a = 1\n\n[history]  # mine\nenabled = false\n", "b", integer(2)),
            "a = 1\nb = 2\n\n[history]  # mine\nenabled = false\n");
  EXPECT_EQ(edited("[history]\nenabled = false\n", "b", integer(2)),
            "b = 2\n[history]\nenabled = false\n");
}

TEST(SettingsText, ReadsAnEmptyValueForTypesThatNoSettingHas) {
  for (const char* other : {"k = 1979-05-27", "k = 07:32:00", "k = [1, 2]", "k = ['a', 1]",
                            "k = [['a']]", "k = {a = 1}", "[k]\na = 1", "[[k]]", "k.a = 1"}) {
    EXPECT_EQ(valuesOf(other), (PropertyDictionary{{"k", std::monostate()}})) << other;
  }
}

TEST(SettingsText, ReadsNothingFromAnEmptyText) {
  EXPECT_EQ(valuesOf(""), PropertyDictionary());
  EXPECT_EQ(valuesOf("# only a comment"), PropertyDictionary());
  EXPECT_EQ(valuesOf("\xEF\xBB\xBF\n"), PropertyDictionary());
}

TEST(SettingsText, SaysInWhichLineATextIsDamaged) {
  EXPECT_TRUE(parseSettings("a = 1\nb = \n").damage.starts_with("line 2: "))
      << parseSettings("a = 1\nb = \n").damage;
}

TEST(SettingsText, NoticesDamage) {
  using namespace std::string_view_literals;
  for (const std::string_view damaged : {"a"sv,
                                         "a ="sv,
                                         "= 1"sv,
                                         "a = 1 b = 2"sv,
                                         "a = 'x"sv,
                                         "a = [1"sv,
                                         "[t"sv,
                                         "[t]]"sv,
                                         "a = 1\na = 2"sv,
                                         "a = 99999999999999999999"sv,
                                         "a = tru"sv,
                                         "\xFF\xFE"
                                         "a\0"sv,
                                         "a = \"\xC3\""sv,
                                         "a\0= 1"sv,
                                         "{\"a\": 1}"sv,
                                         "a = \"\\q\""sv,
                                         "a = é"sv,
                                         "é = 1"sv,
                                         "a = \xC3"sv,
                                         "a = 1979-13-01"sv}) {
    EXPECT_NE(parseSettings(damaged).damage, "") << damaged;
  }
}

TEST(SettingsText, SurvivesListsNestedWithoutEnd) {
  EXPECT_NE(parseSettings("a = " + std::string(100000, '[')).damage, "");
  EXPECT_NE(parseSettings("a = " + std::string(100000, '{')).damage, "");
}

TEST(SettingsText, ChangesOnlyTheValue) {
  EXPECT_EQ(edited("# my settings\n\n  graceSeconds=120   # two minutes\nverbose = false\n",
                   "graceSeconds", integer(90)),
            "# my settings\n\n  graceSeconds=90   # two minutes\nverbose = false\n");
}

TEST(SettingsText, ChangesTheTypeOfAValue) {
  EXPECT_EQ(edited("k = 'text' # c", "k", true), "k = true # c");
  EXPECT_EQ(edited("k = 5", "k", 5.0), "k = 5.0");
  EXPECT_EQ(edited("k = 0x1F", "k", integer(-3)), "k = -3");
  EXPECT_EQ(edited("k = 1979-05-27T07:32:00Z # c", "k", integer(1)), "k = 1 # c");
  EXPECT_EQ(edited("k = {a = 1, b = [2]} # c", "k", integer(1)), "k = 1 # c");
}

TEST(SettingsText, ReplacesAValueOfSeveralLines) {
  EXPECT_EQ(edited("k = [\n  'x', # one\n  'y'\n] # after\nl = 1\n", "k", Texts{"z"}),
            "k = [\n  \"z\"\n] # after\nl = 1\n");
  EXPECT_EQ(edited("k = '''\na = 1\nb'''\nl = 1\n", "k", false), "k = false\nl = 1\n");
}

constexpr char kCommented[] = "k = [  # mine\n  'b',  # two\n  'd'  # four\n]  # end\nl = 1\n";

TEST(SettingsText, KeepsTheCommentsWithinAListThatGrows) {
  EXPECT_EQ(edited(kCommented, "k", Texts{"a", "b", "c", "d", "e"}),
            "k = [  # mine\n  \"a\",\n  'b',  # two\n  \"c\",\n  'd',\n  \"e\"  # four\n]  # end\n"
            "l = 1\n");
}

TEST(SettingsText, KeepsTheCommentsWithinAListThatShrinks) {
  EXPECT_EQ(edited(kCommented, "k", Texts{"d"}), "k = [  # mine\n  'd'  # four\n]  # end\nl = 1\n");
  EXPECT_EQ(edited(kCommented, "k", Texts{"b"}),
            "k = [  # mine\n  'b',  # two\n    # four\n]  # end\nl = 1\n");
  EXPECT_EQ(edited(kCommented, "k", Texts{}), "k = [  # mine\n    # four\n]  # end\nl = 1\n");
  EXPECT_EQ(edited("k = [\n'b', 'd', # c\n]", "k", Texts{"c"}), "k = [\n\"c\",\n # c\n]");
  EXPECT_EQ(edited("k = [\n'b', 'd', # c\n]", "k", Texts{"b"}), "k = [\n'b',  # c\n]");
}

TEST(SettingsText, MendsTheOrderOfAListWithComments) {
  EXPECT_EQ(edited("k = ['d', # four\n'b']\n", "k", Texts{"b", "d"}),
            "k = [\"b\", 'd', # four\n]\n");
}

TEST(SettingsText, FindsAValueAfterCharactersOfSeveralBytes) {
  EXPECT_EQ(edited("\"größe 👩‍💻\" = \"日本\" # é\nk = 1\n", "größe 👩‍💻",
                   text("neu")),
            "\"größe 👩‍💻\" = \"neu\" # é\nk = 1\n");
}

TEST(SettingsText, KeepsAByteOrderMarkAndItsLineEnds) {
  EXPECT_EQ(edited("\xEF\xBB\xBFk = 1\r\nl = 2\r\n", "k", integer(7)),
            "\xEF\xBB\xBFk = 7\r\nl = 2\r\n");
  EXPECT_EQ(edited("\xEF\xBB\xBFk = 1\r\nl = 2\r\n", "m", integer(7)),
            "\xEF\xBB\xBFk = 1\r\nl = 2\r\nm = 7\r\n");
  EXPECT_EQ(edited("\xEF\xBB\xBF", "m", integer(7)), "\xEF\xBB\xBFm = 7\n");
}

TEST(SettingsText, AddsANewKeyAfterTheLastOne) {
  EXPECT_EQ(edited("", "k", true), "k = true\n");
  EXPECT_EQ(edited("# c\n", "k", true), "# c\nk = true\n");
  EXPECT_EQ(edited("a = 1", "k", true), "a = 1\nk = true\n");
  EXPECT_EQ(edited("a = [\n  1,\n] # c\n\n# end\n", "k", true),
            "a = [\n  1,\n] # c\nk = true\n\n# end\n");
}

TEST(SettingsText, AddsANewKeyBeforeTheFirstTable) {
  EXPECT_EQ(edited("a = 1\n\n# about t\n[t]\nx = 1\n", "k", true),
            "a = 1\nk = true\n\n# about t\n[t]\nx = 1\n");
  EXPECT_EQ(edited("# c\n[t]\nx = 1\n", "k", true), "# c\nk = true\n[t]\nx = 1\n");
  EXPECT_EQ(edited("  [[t]]", "k", true), "k = true\n  [[t]]");
  EXPECT_EQ(edited("g.h = \"\"\"\n[t]\n\"\"\"\n", "k", true),
            "k = true\ng.h = \"\"\"\n[t]\n\"\"\"\n");
}

TEST(SettingsText, LeavesAKeyOfATableAlone) {
  EXPECT_EQ(edited("[t]\nk = 1\n", "k", integer(2)), "k = 2\n[t]\nk = 1\n");
}

TEST(SettingsText, KeepsAllValuesWhenTheKeyIsATable) {
  const std::string result = edited("# c\na = 0xFF\n[k]\nx = 1\n[t]\ny = 'é'\n", "k", integer(3));
  EXPECT_EQ(valuesOf(result),
            (PropertyDictionary{{"a", integer(255)}, {"k", integer(3)}, {"t", std::monostate()}}));
  EXPECT_NE(result.find("[t]\ny = 'é'"), std::string::npos) << result;
}

TEST(SettingsText, ReplacesWhatDottedKeysMade) {
  EXPECT_EQ(valuesOf(edited("k.a = 1\nk.b = 2\nl = 3\n", "k", true)),
            (PropertyDictionary{{"k", true}, {"l", integer(3)}}));
}

TEST(SettingsText, KeepsOddKeysWhenTheKeyIsATable) {
  EXPECT_EQ(valuesOf(edited("\"a''b\" = 1\n\"\\tc\" = 2\nk.x = 3\n", "k", true)),
            (PropertyDictionary{{"a''b", integer(1)}, {"\tc", integer(2)}, {"k", true}}));
}

TEST(SettingsText, LeavesOddNeighboursOfAChangedKeyAlone) {
  EXPECT_EQ(edited("n = nan\nd = 1979-05-27\nk = 1\n[[z]]\n", "k", integer(2)),
            "n = nan\nd = 1979-05-27\nk = 2\n[[z]]\n");
}

TEST(SettingsText, WritesEveryTypeSoThatItReadsBack) {
  const std::vector<PropertyValue> values = {true,
                                             integer(std::numeric_limits<std::int64_t>::min()),
                                             integer(0),
                                             integer(std::numeric_limits<std::int64_t>::max()),
                                             15.0,
                                             -0.1,
                                             1e300,
                                             5e-324,
                                             1e20,
                                             std::numeric_limits<double>::infinity(),
                                             -std::numeric_limits<double>::infinity(),
                                             text(""),
                                             text("a\"b\\c\nd\te\x01\x7F 'é' 👩‍💻 #"),
                                             Texts{},
                                             Texts{""},
                                             Texts{"a,b", "]", "#"},
                                             Texts(50, "com.example.application")};
  for (const PropertyValue& value : values) {
    for (const char* settings : {"", "k = 1\n", "k = 1\r\nl = 2\r\n"}) {
      const std::string result = edited(settings, "k", value);
      EXPECT_EQ(valuesOf(result)["k"], value) << result;
    }
  }
}

TEST(SettingsText, WritesNotANumber) {
  const PropertyValue value = valuesOf(edited("k = 1", "k", std::nan("")))["k"];
  EXPECT_TRUE(std::isnan(std::get<double>(value)));
}

TEST(SettingsText, WritesAWholeRealAsAReal) {
  EXPECT_EQ(edited("", "k", 15.0), "k = 15.0\n");
  EXPECT_EQ(edited("", "k", 1e20), "k = 1e+20\n");
}

TEST(SettingsText, WritesALongListWithOneTextInEachLine) {
  EXPECT_EQ(edited("", "k", Texts{std::string(50, 'a'), std::string(50, 'b')}),
            "k = [\n  \"" + std::string(50, 'a') + "\",\n  \"" + std::string(50, 'b') + "\",\n]\n");
}

TEST(SettingsText, MendsBrokenText) {
  EXPECT_EQ(edited("", "k", Texts{"a\xFF"}), "k = [\"a\uFFFD\"]\n");
  EXPECT_EQ(valuesOf(edited("", "k\xFF", true)), (PropertyDictionary{{"k\uFFFD", true}}));
}

TEST(SettingsText, QuotesAKeyThatNeedsQuotes) {
  EXPECT_EQ(edited("", "a-b_C9", true), "a-b_C9 = true\n");
  EXPECT_EQ(edited("", "a.b \"c\"", true), "\"a.b \\\"c\\\"\" = true\n");
  EXPECT_EQ(edited("\"\" = 1\n", "", true), "\"\" = true\n");
}

TEST(SettingsText, RefusesAValueWithoutAType) {
  EXPECT_EQ(withSettings("", {{"k", std::monostate()}}), std::nullopt);
}

PropertyDictionary readOf(std::string_view damaged) {
  const SettingsValues parsed = parseSettings(damaged);
  EXPECT_NE(parsed.damage, "") << damaged;
  return parsed.values;
}

TEST(SettingsText, ReadsWhatStandsAroundADamagedStatement) {
  const PropertyDictionary both = {{"a", integer(1)}, {"b", integer(2)}};
  for (const char* damage : {"x",
                             "x =",
                             "= 1",
                             "x = tru",
                             "x = 'y",
                             "x = \"y",
                             "x = 99999999999999999999",
                             "x = [1, 2",
                             "x = [\n 'y',\n 'z'",
                             "x = {c = 1",
                             "x = \"\"\"y",
                             "x = '''y",
                             "x = [[1],\n [2",
                             "x = 1 y = 2",
                             "x = \xC3",
                             "# \x01",
                             "\x01",
                             "a = 3",
                             "x = \"\\q\"",
                             "a.c = 1"}) {
    EXPECT_EQ(readOf("a = 1\n" + std::string(damage) + "\nb = 2\n"), both) << damage;
  }
}

TEST(SettingsText, ReadsNoSettingFromALineThatMayBelongToATable) {
  EXPECT_EQ(readOf("a = 1\n[t\nb = 2\n[u]\nc = 3\n"),
            (PropertyDictionary{{"a", integer(1)}, {"u", std::monostate()}}));
  EXPECT_EQ(readOf("a = [1,\n[t]\nb = 2\n"), (PropertyDictionary{{"t", std::monostate()}}));
}

TEST(SettingsText, ReadsSettingsAboveTablesThatDisagree) {
  std::string text = "a = 1\n";
  for (int table = 0; table < 20; ++table)
    text += "[t]\nx = 1\nx = 2\n";
  EXPECT_EQ(readOf(text)["a"], integer(1));
}

TEST(SettingsText, CountsWhatCannotBeRead) {
  const std::string damage = parseSettings("a = \nb = 1\nc = \nd = \n").damage;
  EXPECT_TRUE(damage.starts_with("line 1: ")) << damage;
  EXPECT_TRUE(damage.ends_with(", and 2 more")) << damage;
}

TEST(SettingsText, ReadsNothingFromBytesThatAreNoText) {
  using namespace std::string_view_literals;
  EXPECT_EQ(readOf("\xFF\xFE"
                   "a\0=\0"
                   "1\0\n\0"sv),
            PropertyDictionary());
}

TEST(SettingsText, LeavesDamageAsItStands) {
  EXPECT_EQ(edited("a = 1\nx = [1,\nb = 2 # two\n[t\ny = \n", "b", integer(3)),
            "a = 1\nx = [1,\nb = 3 # two\n[t\ny = \n");
  EXPECT_EQ(edited("x = ", "k", true), "x = \nk = true\n");
  EXPECT_EQ(edited("[t\n", "k", true), "k = true\n[t\n");
  EXPECT_EQ(edited("x = \"\"\"\n", "k", true), "x = \"\"\"\nk = true\n");
}

TEST(SettingsText, TurnsTheDamagedLinesOfAChangedKeyIntoComments) {
  EXPECT_EQ(edited("k = [1,\n 2\nb = 1\n", "k", integer(3)), "# k = [1,\n#  2\nb = 1\nk = 3\n");
  EXPECT_EQ(edited("'k' = tru\r\n", "k", true), "# 'k' = tru\r\nk = true\r\n");
}

TEST(SettingsText, MakesSeveralChangesAtOnce) {
  const PropertyDictionary changes = {
      {"a", integer(5)}, {"b", Texts{"y"}}, {"new", true}, {"other", false}};
  EXPECT_EQ(withSettings("b = [ # c\n'x']\na = 1 # one\n[t]\n", changes),
            "b = [ # c\n\"y\"]\na = 5 # one\nnew = true\nother = false\n[t]\n");
}

TEST(SettingsText, ChangesNothingWithoutChanges) {
  EXPECT_EQ(withSettings("a = 1", {}), "a = 1");
  EXPECT_EQ(withSettings("a = ", {}), "a = ");
}

TEST(SettingsText, ChangesOneOfVeryManyKeys) {
  std::string text;
  for (int number = 0; number < 29'000; ++number)
    text += "key" + std::to_string(number) + " = " + std::to_string(number) + "\n";
  const std::string wanted = text + "k = true\n";
  EXPECT_EQ(edited(text, "k", true), wanted);
  EXPECT_TRUE(edited(text, "key28999", integer(0)).ends_with("key28999 = 0\n"));
}

}  // namespace
}  // namespace platform

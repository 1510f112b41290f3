#include "Platform/Linux/Settings/SettingsText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <variant>

namespace platform {
namespace {

using tidewell::PropertyDictionary;
using tidewell::PropertyValue;
using Texts = std::vector<std::string>;

PropertyValue integer(std::int64_t value) {
  return value;
}

PropertyValue text(const char* characters) {
  return std::string(characters);
}

PropertyDictionary valuesOf(std::string_view settings) {
  const SettingsValues parsed = parseSettings(settings);
  EXPECT_EQ(parsed.error, "") << settings;
  return parsed.values;
}

std::string edited(std::string_view settings, std::string_view key, const PropertyValue& value) {
  return withSetting(settings, key, value).value_or("(not possible)");
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

TEST(SettingsText, KeepsPlaceForTypesThatNoSettingHas) {
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
  EXPECT_TRUE(parseSettings("a = 1\nb = \n").error.starts_with("line 2: "))
      << parseSettings("a = 1\nb = \n").error;
}

TEST(SettingsText, RefusesDamagedTexts) {
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
    EXPECT_NE(parseSettings(damaged).error, "") << damaged;
    EXPECT_EQ(withSetting(damaged, "k", true), std::nullopt) << damaged;
  }
}

TEST(SettingsText, RefusesListsNestedWithoutEnd) {
  EXPECT_NE(parseSettings("a = " + std::string(100000, '[')).error, "");
  EXPECT_NE(parseSettings("a = " + std::string(100000, '{')).error, "");
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

TEST(SettingsText, FindsAValueBehindCharactersOfSeveralBytes) {
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

TEST(SettingsText, KeepsAllValuesWhereTheKeyIsATable) {
  const std::string result = edited("# c\na = 0xFF\n[k]\nx = 1\n[t]\ny = 'é'\n", "k", integer(3));
  EXPECT_EQ(valuesOf(result),
            (PropertyDictionary{{"a", integer(255)}, {"k", integer(3)}, {"t", std::monostate()}}));
  EXPECT_NE(result.find("[t]\ny = 'é'"), std::string::npos) << result;
}

TEST(SettingsText, ReplacesWhatDottedKeysMade) {
  EXPECT_EQ(valuesOf(edited("k.a = 1\nk.b = 2\nl = 3\n", "k", true)),
            (PropertyDictionary{{"k", true}, {"l", integer(3)}}));
}

TEST(SettingsText, KeepsOddKeysWhereTheKeyIsATable) {
  EXPECT_EQ(valuesOf(edited("\"a''b\" = 1\n\"\\tc\" = 2\nk.x = 3\n", "k", true)),
            (PropertyDictionary{{"a''b", integer(1)}, {"\tc", integer(2)}, {"k", true}}));
}

TEST(SettingsText, WritesNoChangeForOddNeighbours) {
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

TEST(SettingsText, WritesALongListOneTextALine) {
  EXPECT_EQ(edited("", "k", Texts{std::string(50, 'a'), std::string(50, 'b')}),
            "k = [\n  \"" + std::string(50, 'a') + "\",\n  \"" + std::string(50, 'b') + "\",\n]\n");
}

TEST(SettingsText, MendsBrokenText) {
  EXPECT_EQ(edited("", "k", Texts{"a\xFF"}), "k = [\"a\uFFFD\"]\n");
  EXPECT_EQ(valuesOf(edited("", "k\xFF", true)), (PropertyDictionary{{"k\uFFFD", true}}));
}

TEST(SettingsText, QuotesAKeyThatMustBe) {
  EXPECT_EQ(edited("", "a-b_C9", true), "a-b_C9 = true\n");
  EXPECT_EQ(edited("", "a.b \"c\"", true), "\"a.b \\\"c\\\"\" = true\n");
  EXPECT_EQ(edited("\"\" = 1\n", "", true), "\"\" = true\n");
}

TEST(SettingsText, RefusesAValueWithoutAType) {
  EXPECT_EQ(withSetting("", "k", std::monostate()), std::nullopt);
}

}  // namespace
}  // namespace platform

// What the adapters read out of objects, and make of texts.

#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Platform/MacOS/CoreFoundation/CFProperties.h"
#include "Platform/MacOS/CoreFoundation/CFRef.h"
#include "Platform/MacOS/CoreFoundation/CFText.h"
#include "Tests/Platform/MacOS/Stubs/Ledger.h"

namespace platform {
namespace {

using tidewell::PropertyDictionary;
using tidewell::PropertyValue;

CFRef<CFTypeRef> objectOf(const stub::Value& value) {
  stub::Ledger& ledger = stub::Ledger::shared();
  return CFRef<CFTypeRef>::adopt(ledger.handOver(ledger.make(value, "the test")));
}

PropertyValue property(const stub::Value& value) {
  return propertyValue(objectOf(value).get());
}

std::optional<PropertyDictionary> dictionary(const stub::Value& value) {
  return propertyDictionary(objectOf(value).get());
}

TEST(CFProperties, KeepTheTypeOfAPlainValue) {
  EXPECT_EQ(property(true), PropertyValue(true));
  EXPECT_EQ(property(false), PropertyValue(false));
  EXPECT_EQ(property(255), PropertyValue(std::int64_t{255}));
  EXPECT_EQ(property(std::numeric_limits<std::int64_t>::min()),
            PropertyValue(std::numeric_limits<std::int64_t>::min()));
  EXPECT_EQ(property(2.5), PropertyValue(2.5));
  EXPECT_EQ(property(u"AC Power"), PropertyValue("AC Power"));
}

TEST(CFProperties, ReadAListOfTextsAndNoOtherList) {
  EXPECT_EQ(property(stub::List{u"a", u"b"}), PropertyValue(std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(property(stub::List{}), PropertyValue(std::vector<std::string>{}));
  EXPECT_EQ(property(stub::List{u"a", 1}), PropertyValue());
}

TEST(CFProperties, HaveNoValueForWhatNobodyReads) {
  EXPECT_EQ(property(stub::Opaque()), PropertyValue());
  EXPECT_EQ(property(stub::Dictionary{{u"key", 1}}), PropertyValue());
  EXPECT_EQ(propertyValue(nullptr), PropertyValue());
}

TEST(CFProperties, MakeTextsSafeToShow) {
  EXPECT_EQ(property(u"a\x1B[2J\nb"), PropertyValue("a\uFFFD[2J\uFFFDb"));
  EXPECT_EQ(property(stub::List{u"\a"}), PropertyValue(std::vector<std::string>{"\uFFFD"}));
  EXPECT_EQ(dictionary(stub::Dictionary{{u"a\n", u"b\n"}}),
            (PropertyDictionary{{"a\uFFFD", "b\uFFFD"}}));
}

TEST(CFProperties, ReadADictionaryWithTextsForKeysAndNoOther) {
  EXPECT_EQ(dictionary(stub::Dictionary{{u"level", 0}, {u"since", stub::Opaque()}}),
            (PropertyDictionary{{"level", std::int64_t{0}}, {"since", PropertyValue()}}));
  EXPECT_EQ(dictionary(stub::Dictionary{}), PropertyDictionary());
  EXPECT_EQ(dictionary(stub::Dictionary{{u"level", 0}, {7, 0}}), std::nullopt);
  EXPECT_EQ(dictionary(stub::List{}), std::nullopt);
  EXPECT_EQ(propertyDictionary(nullptr), std::nullopt);
}

TEST(CFText, ComesBackAsItWas) {
  for (const std::string text : {"", "Xcode is working", "caf\u00E9 \u2014 \U0001F600"})
    EXPECT_EQ(utf8(makeCFString(text).get()), text);
  EXPECT_EQ(CFStringGetLength(makeCFString("\U0001F600").get()), 2);
}

TEST(CFText, IsNeverNullWhateverTheBytes) {
  EXPECT_EQ(utf8(makeCFString("caf\xC3\xA9 \xFF\xC3(").get()), "caf\u00E9 \uFFFD\uFFFD(");
  EXPECT_EQ(utf8(makeCFString(std::string("a\0b", 3)).get()), std::string("a\0b", 3));
}

TEST(CFText, HasAReplacementForASurrogateWithoutAPartner) {
  const CFRef<CFTypeRef> text = objectOf(std::u16string{u'a', char16_t{0xD83D}});
  EXPECT_EQ(utf8(static_cast<CFStringRef>(text.get())), "a\uFFFD");
  EXPECT_EQ(utf8(nullptr), "");
}

TEST(CFRef, GivesUpTheReferenceThatItIsAssignedOver) {
  CFRef<CFStringRef> text = makeCFString("a");
  text = makeCFString("b");
  text = CFRef<CFStringRef>();
  EXPECT_FALSE(text);
  EXPECT_EQ(stub::Ledger::shared().close(), std::vector<std::string>{});
}

TEST(CFRef, AddsAReferenceToWhatAnotherOwns) {
  const CFRef<CFTypeRef> list = objectOf(stub::List{u"a"});
  auto kept =
      CFRef<CFTypeRef>::retain(CFArrayGetValueAtIndex(static_cast<CFArrayRef>(list.get()), 0));
  CFRef<CFTypeRef> moved = std::move(kept);
  EXPECT_EQ(propertyValue(moved.get()), PropertyValue("a"));
  CFRelease(moved.release());
}

}  // namespace
}  // namespace platform

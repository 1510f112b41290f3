// Whether the stubs complain of what a Mac would not forgive.

#include "Tests/Platform/MacOS/Stubs/Ledger.h"

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/ps/IOPowerSources.h>
#include <IOKit/pwr_mgt/IOPMLib.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tests/Platform/MacOS/Stubs/PowerService.h"

namespace platform {
namespace {

using Lines = std::vector<std::string>;

CFStringRef createText() {
  const UInt8 bytes[] = {'a', 'b'};
  return CFStringCreateWithBytes(kCFAllocatorDefault, bytes, 2, kCFStringEncodingUTF8, false);
}

Lines complaints() {
  return stub::Ledger::shared().close();
}

TEST(Ledger, HasNoComplaintOfWhatIsReleasedAsOftenAsItIsOwned) {
  const CFStringRef text = createText();
  CFRetain(text);
  CFRelease(text);
  EXPECT_EQ(CFStringGetLength(text), 2);
  CFRelease(text);
  EXPECT_EQ(complaints(), Lines{});
}

TEST(Ledger, ComplainsOfAnObjectThatIsNeverReleased) {
  createText();
  EXPECT_EQ(complaints(), Lines{"never released: the object of CFStringCreateWithBytes"});
  EXPECT_EQ(complaints(), Lines{}) << "told once";
}

TEST(Ledger, ComplainsOfAReferenceThatWasAddedAndIsNeverReleased) {
  CFRetain(CFSTR("constant"));
  EXPECT_EQ(complaints(), Lines{"never released: the object of CFSTR"});
}

TEST(Ledger, ComplainsOfAReleaseOfWhatBelongsToAnother) {
  stub::PowerService::shared().sources = {stub::Dictionary{}};
  const CFTypeRef information = IOPSCopyPowerSourcesInfo();
  const CFArrayRef list = IOPSCopyPowerSourcesList(information);
  CFRelease(IOPSGetPowerSourceDescription(information, CFArrayGetValueAtIndex(list, 0)));
  CFRelease(list);
  CFRelease(information);
  EXPECT_EQ(complaints(),
            Lines{"CFRelease: nobody here owns the object of IOPSCopyPowerSourcesInfo"});
}

TEST(Ledger, ComplainsOfAReleaseOfAConstant) {
  CFRelease(CFSTR("constant"));
  EXPECT_EQ(complaints(), Lines{"CFRelease: nobody here owns the object of CFSTR"});
}

TEST(Ledger, ComplainsOfAUseAfterTheLastRelease) {
  const CFStringRef text = createText();
  CFRelease(text);
  EXPECT_EQ(CFStringGetLength(text), 0);
  CFRelease(text);
  EXPECT_EQ(complaints(), (Lines{"CFStringGetLength: after the last release of the object of "
                                 "CFStringCreateWithBytes",
                                 "CFRelease: after the last release of the object of "
                                 "CFStringCreateWithBytes"}));
}

TEST(Ledger, ComplainsOfAUseOfWhatWentWithItsOwner) {
  stub::PowerService::shared().sources = {stub::Dictionary{}};
  const CFTypeRef information = IOPSCopyPowerSourcesInfo();
  const CFArrayRef list = IOPSCopyPowerSourcesList(information);
  const CFDictionaryRef description =
      IOPSGetPowerSourceDescription(information, CFArrayGetValueAtIndex(list, 0));
  CFRelease(list);
  CFRelease(information);
  CFDictionaryGetCount(description);
  EXPECT_EQ(complaints(), Lines{"CFDictionaryGetCount: after the last release of the object of "
                                "IOPSCopyPowerSourcesInfo"});
}

TEST(Ledger, KeepsAPartThatIsOwnedBesidesItsOwner) {
  stub::PowerService::shared().answer = stub::List{1};
  CFDictionaryRef answer = nullptr;
  IOPMCopyAssertionsByProcess(&answer);
  const auto list = static_cast<CFArrayRef>(static_cast<CFTypeRef>(answer));
  const CFTypeRef part = CFRetain(CFArrayGetValueAtIndex(list, 0));
  CFRelease(list);
  EXPECT_EQ(CFGetTypeID(part), CFNumberGetTypeID());
  CFRelease(part);
  EXPECT_EQ(complaints(), Lines{});
}

TEST(Ledger, ComplainsOfAnAnswerThatComesWithAFailureAndIsNotReleased) {
  stub::PowerService::shared().listing = kIOReturnError;
  CFDictionaryRef answer = nullptr;
  EXPECT_EQ(IOPMCopyAssertionsByProcess(&answer), kIOReturnError);
  EXPECT_EQ(complaints(), Lines{"never released: the object of IOPMCopyAssertionsByProcess"});
}

TEST(Ledger, ComplainsOfNullOfAnotherTypeAndOfPlacesBeyondTheEnd) {
  const CFStringRef text = createText();
  CFRelease(nullptr);
  CFArrayGetCount(static_cast<CFArrayRef>(static_cast<CFTypeRef>(text)));
  UniChar units[3] = {};
  CFStringGetCharacters(text, CFRangeMake(0, 3), units);
  CFRelease(text);
  EXPECT_EQ(complaints(), (Lines{"CFRelease: null", "CFArrayGetCount: an object of another type",
                                 "CFStringGetCharacters: beyond the end"}));
}

TEST(Ledger, ComplainsOfAnAssertionThatIsReleasedTwice) {
  IOPMAssertionID identifier = 0;
  ASSERT_EQ(IOPMAssertionCreateWithName(CFSTR("type"), 255, CFSTR("name"), &identifier), 0);
  EXPECT_EQ(IOPMAssertionRelease(identifier), kIOReturnSuccess);
  EXPECT_EQ(IOPMAssertionRelease(identifier), kIOReturnNotFound);
  EXPECT_EQ(complaints(), Lines{"IOPMAssertionRelease: no such assertion"});
}

}  // namespace
}  // namespace platform

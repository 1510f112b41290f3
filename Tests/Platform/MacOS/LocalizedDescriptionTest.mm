#include "Platform/MacOS/Text/LocalizedDescription.h"

#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "Platform/MacOS/Text/NSText.h"

namespace platform {
namespace {

TEST(LocalizedDescription, IsTheOneOfTheSystemsErrorObject) {
  NSError* error = [NSError errorWithDomain:NSPOSIXErrorDomain code:ENOENT userInfo:nil];
  EXPECT_EQ(localizedDescription(ENOENT), utf8(error.localizedDescription));
  EXPECT_NE(localizedDescription(ENOENT), "");
  EXPECT_NE(localizedDescription(ENOENT), localizedDescription(EACCES));
}

}  // namespace
}  // namespace platform

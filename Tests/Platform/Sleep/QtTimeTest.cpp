#include "Platform/Linux/Sleep/QtTime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>

namespace platform {
namespace {

using namespace std::chrono_literals;

TEST(QtTime, IsReadAsQtWritesIt) {
  EXPECT_EQ(parseQtTime(R"(@Variant(\0\0\0\xf\0\0u0))"), 30s);
  EXPECT_EQ(parseQtTime(R"(@Variant(\0\0\0\xf\0\0\xea`))"), 60s);
  EXPECT_EQ(parseQtTime(R"(@Variant(\0\0\0\xf\0\r\xbb\xa0))"), 15min);
  EXPECT_EQ(parseQtTime(R"(@Variant(\0\0\0\xf\0\x36\xea\x98))"), 3'599'000ms);
}

TEST(QtTime, MayStandInQuotes) {
  EXPECT_EQ(parseQtTime(R"~("@Variant(\0\0\0\xf\0\0,\")")~"), 11'298ms);
}

TEST(QtTime, IsNotGuessed) {
  for (const char* other :
       {"", "\"", "900", "@Variant(", "@Variant()", R"(@Variant(\0\0\0\xf\0\0u))",
        R"(@Variant(\0\0\0\xf\0\0u00))", R"(@Variant(\0\0\0\xe\0\0u0))",
        R"(@Variant(\0\0\0\xf\0\0u\))", R"(@Variant(\0\0\0\xf\0\0u\x))",
        R"(@Variant(\0\0\0\xf\0\0u\xfff))", R"(@Variant(\0\0\0\xf\0\0u\q))",
        R"(@Variant(\0\0\0\xf\xff\xff\xff\xff))", R"(@ByteArray(\0\0\0\xf\0\0u0))"})
    EXPECT_EQ(parseQtTime(other), std::nullopt) << other;
}

}  // namespace
}  // namespace platform

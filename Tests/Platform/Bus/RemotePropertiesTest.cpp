#include "Platform/Linux/Bus/RemoteProperties.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Tests/Platform/Support/BusTest.h"
#include "Tests/Platform/Support/FakePropertyService.h"

namespace platform {
namespace {

using namespace testing;  // NOLINT: the fixture's names

constexpr const char* kName = "test.Lamp";
constexpr const char* kPath = "/lamp";
/// U+FFFE: a bus passes a text with this character on, but sd-bus reads no such text.
constexpr const char* kUnreadableText = "\xEF\xBF\xBE";

const RemoteProperties::Names kWanted{"Colour", "History", "IsOn", "Level", "Symbol", "Watts"};

class RemotePropertiesTest : public BusTest {
 protected:
  void SetUp() override {
    BusTest::SetUp();
    if (!IsSkipped())
      properties = std::make_unique<RemoteProperties>(*systemBus, kName, kPath, kName, kWanted);
  }
  void TearDown() override { properties.reset(); }

  std::unique_ptr<FakePropertyService> lamp(const std::string& colour) {
    auto service = std::make_unique<FakePropertyService>(systemDaemon->address(), kName);
    service->set(kPath, kName, {{"Colour", colour}});
    return service;
  }

  std::string colour() {
    const tidewell::PropertyDictionary* all = properties->read();
    if (all == nullptr) return "absent";
    const auto found = all->find("Colour");
    return found == all->end() ? "missing" : std::get<std::string>(found->second);
  }

  std::unique_ptr<RemoteProperties> properties;
};

TEST_F(RemotePropertiesTest, HaveSimpleValuesAndNoOthers) {
  FakePropertyService service(systemDaemon->address(), kName);
  service.set(kPath, kName,
              {{"Colour", std::string("red")}, {"IsOn", true}, {"Level", 0.5}, {"Watts", 60U}});
  const tidewell::PropertyDictionary expected{
      {"Colour", std::string("red")}, {"History", std::monostate()}, {"IsOn", true}, {"Level", 0.5},
      {"Symbol", std::monostate()},   {"Watts", std::int64_t{60}}};
  ASSERT_NE(properties->read(), nullptr);
  EXPECT_EQ(*properties->read(), expected);
}

TEST_F(RemotePropertiesTest, AreReadOnceAndThenFollowed) {
  const auto service = lamp("red");
  EXPECT_EQ(colour(), "red");
  service->change(kPath, kName, "Colour", std::string("green"));
  EXPECT_TRUE(eventually([&] { return colour() == "green"; }));
  EXPECT_EQ(service->readings, 1);
}

TEST_F(RemotePropertiesTest, AreReadAgainWhenASignalNamesThemWithoutValues) {
  const auto service = lamp("red");
  EXPECT_EQ(colour(), "red");
  service->invalidate(kPath, kName, "Colour", std::string("green"));
  EXPECT_TRUE(eventually([&] { return colour() == "green"; }));
}

TEST_F(RemotePropertiesTest, KeepOnlyTheWantedNames) {
  FakePropertyService service(systemDaemon->address(), kName);
  FakePropertyService::Properties many{{"Colour", std::string("red")}};
  for (int count = 0; count < 1000; ++count)
    many["Key" + std::to_string(count)] = true;
  service.set(kPath, kName, many);
  EXPECT_EQ(colour(), "red");
  service.change(kPath, kName, "Another", std::string("text"));
  service.change(kPath, kName, "Colour", std::string("green"));
  EXPECT_TRUE(eventually([&] { return colour() == "green"; }));
  const tidewell::PropertyDictionary expected{{"Colour", std::string("green")},
                                              {"History", std::monostate()},
                                              {"Symbol", std::monostate()}};
  EXPECT_EQ(*properties->read(), expected);
}

TEST_F(RemotePropertiesTest, KeepNoTextOfMoreThan256Bytes) {
  const auto service = lamp("red");
  EXPECT_EQ(colour(), "red");
  service->change(kPath, kName, "Colour", std::string(257, 'x'));
  EXPECT_TRUE(eventually([&] {
    return properties->read()->at("Colour") == tidewell::PropertyValue(std::monostate());
  }));
  service->change(kPath, kName, "Colour", std::string(256, 'x'));
  EXPECT_TRUE(eventually([&] {
    return properties->read()->at("Colour") == tidewell::PropertyValue(std::string(256, 'x'));
  }));
}

TEST_F(RemotePropertiesTest, AreNotReadAgainWhenASignalNamesOnlyUnwantedOnes) {
  const auto service = lamp("red");
  EXPECT_EQ(colour(), "red");
  service->invalidate(kPath, kName, "Another", true);
  service->change(kPath, kName, "Colour", std::string("green"));
  EXPECT_TRUE(eventually([&] { return colour() == "green"; }));
  EXPECT_EQ(service->readings, 1);
}

TEST_F(RemotePropertiesTest, AreAbsentWhenTheReplyCanBeReadOnlyInPart) {
  FakePropertyService service(systemDaemon->address(), kName);
  service.set(kPath, kName,
              {{"Colour", std::string("red")}, {"Nobody", std::string(kUnreadableText)}});
  EXPECT_EQ(colour(), "absent");
}

TEST_F(RemotePropertiesTest, AreReadWithTheNextSignalWhenTheFirstReplyCouldBeReadOnlyInPart) {
  FakePropertyService service(systemDaemon->address(), kName);
  service.set(kPath, kName,
              {{"Colour", std::string("red")}, {"Nobody", std::string(kUnreadableText)}});
  EXPECT_EQ(colour(), "absent");
  service.set(kPath, kName, {{"Colour", std::string("red")}});
  service.change(kPath, kName, "IsOn", true);
  EXPECT_TRUE(eventually([&] { return colour() == "red"; }));
}

TEST_F(RemotePropertiesTest, StayAsTheyAreWhenALaterReplyCanBeReadOnlyInPart) {
  const auto service = lamp("red");
  EXPECT_EQ(colour(), "red");
  service->set(kPath, kName,
               {{"Colour", std::string("green")}, {"Nobody", std::string(kUnreadableText)}});
  service->invalidate(kPath, kName, "Colour", std::string("green"));
  ASSERT_TRUE(eventually([&] { return service->readings == 2; }));
  service->change(kPath, kName, "IsOn", true);
  EXPECT_TRUE(eventually([&] { return properties->read()->contains("IsOn"); }));
  EXPECT_EQ(colour(), "red");
}

TEST_F(RemotePropertiesTest, AreReadAgainWhenASignalCanBeReadOnlyInPart) {
  const auto service = lamp("red");
  EXPECT_EQ(colour(), "red");
  service->announce(kPath, kName,
                    {{"Colour", std::string("green")}, {"Nobody", std::string(kUnreadableText)}});
  ASSERT_TRUE(eventually([&] { return service->readings == 2; }));
  EXPECT_EQ(colour(), "red");
}

TEST_F(RemotePropertiesTest, DoNotChangeWithAnotherInterface) {
  const auto service = lamp("red");
  EXPECT_EQ(colour(), "red");
  service->change(kPath, "test.Other", "Colour", std::string("green"));
  service->change(kPath, kName, "IsOn", true);
  EXPECT_TRUE(eventually([&] { return properties->read()->contains("IsOn"); }));
  EXPECT_EQ(colour(), "red");
}

TEST_F(RemotePropertiesTest, AreAbsentUntilTheServiceAppears) {
  EXPECT_EQ(colour(), "absent");
  const auto service = lamp("red");
  EXPECT_TRUE(eventually([&] { return colour() == "red"; }));
}

TEST_F(RemotePropertiesTest, AreAbsentWhileTheServiceIsGone) {
  auto service = lamp("red");
  EXPECT_EQ(colour(), "red");
  service.reset();
  EXPECT_TRUE(eventually([&] { return colour() == "absent"; }));
  service = lamp("green");
  EXPECT_TRUE(eventually([&] { return colour() == "green"; }));
}

TEST_F(RemotePropertiesTest, ComeBackWithTheBus) {
  auto service = lamp("red");
  EXPECT_EQ(colour(), "red");
  systemDaemon->stop();
  EXPECT_TRUE(eventually([&] { return colour() == "absent"; }));
  service.reset();
  systemDaemon->start();
  service = lamp("green");
  EXPECT_TRUE(eventually([&] { return colour() == "green"; }));
}

TEST_F(RemotePropertiesTest, AreAskedForOnlyOnceWhileTheServiceIsAbsent) {
  EXPECT_EQ(colour(), "absent");
  systemDaemon->freeze();
  EXPECT_EQ(colour(), "absent");
  EXPECT_EQ(colour(), "absent");
  systemDaemon->thaw();
  // A call to the frozen bus would have begun a pause.
  EXPECT_EQ(systemBus->nameStatus("test.Other").state, NameStatus::State::free);
}

}  // namespace
}  // namespace platform

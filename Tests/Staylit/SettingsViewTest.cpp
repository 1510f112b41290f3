#include "Staylit/SettingsView.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "Tests/Fakes/FakePorts.h"

namespace staylit {

void PrintTo(const SettingsView::Row& row, std::ostream* stream) {
  *stream << row.label << " | " << row.error << " | " << row.caption;
}

namespace {

using Control = SettingsView::Control;
using Integer = std::int64_t;
using Row = SettingsView::Row;
using Section = SettingsView::Section;
using Slider = SettingsView::Slider;
using Texts = std::vector<std::string>;
using Toggle = SettingsView::Toggle;
using Value = SettingsView::Value;
using tidewell::FakePrivilegedScripts;
using tidewell::PropertyValue;

constexpr const char* kDeclined = "Administrator approval was declined.";
constexpr const char* kLidCaption =
    "Needs your admin password once. Restored automatically if Staylit stops.";
constexpr Integer kLeast = std::numeric_limits<Integer>::min();
constexpr Integer kMost = std::numeric_limits<Integer>::max();

const std::vector<Control>& allControls() {
  static const std::vector<Control> all = {
      Control::grace,    Control::keepScreenOn,    Control::lidClosed,
      Control::battery,  Control::respectLowPower, Control::rightNow,
      Control::watching, Control::honorAssertions, Control::launchAtLogin};
  return all;
}

class SettingsViewTest : public testing::Test {
 protected:
  void SetUp() override { fakes.calls->clear(); }

  /// Makes the view anew, with this value in the store.
  void open(std::string_view key, PropertyValue value) {
    fakes.defaults.stored[std::string(key)] = std::move(value);
    view = std::make_unique<SettingsView>(*engine, fakes.ports);
    fakes.calls->clear();
  }

  Row row(Control control) {
    for (const Section& section : view->form()) {
      for (const Row& each : section.rows) {
        if (each.control == control) return each;
      }
    }
    ADD_FAILURE() << "no such row";
    return view->form().front().rows.front();
  }
  std::string label(Control control) { return row(control).label; }
  bool isOn(Control control) { return std::get<Toggle>(row(control).content).isOn; }
  Integer knob(Control control) { return std::get<Slider>(row(control).content).value; }
  std::string text(Control control) { return std::get<Value>(row(control).content).text; }
  PropertyValue stored(const std::string& key) { return fakes.defaults.stored[key]; }
  bool isStored(const std::string& key) { return fakes.defaults.stored.contains(key); }

  /// Sets the next answers to the administrator's prompt.
  void answer(const std::vector<bool>& approvals) {
    for (const bool approved : approvals) {
      fakes.scripts.nextOutcomes.push_back(approved ? FakePrivilegedScripts::Outcome{}
                                                    : FakePrivilegedScripts::declined());
    }
  }
  /// The requests to the administrator so far: 1 for sleep off, 0 for sleep on.
  std::string asked() {
    std::string result;
    for (const std::string& source : fakes.scripts.sources)
      result += source.find("disablesleep 1") != std::string::npos ? '1' : '0';
    return result;
  }
  Texts loginCalls() { return fakes.calls->only({"register login item", "unregister login item"}); }

  tidewell::FakePorts fakes;
  std::unique_ptr<StaylitEngine> engine = std::make_unique<StaylitEngine>(fakes.ports);
  std::unique_ptr<SettingsView> view = std::make_unique<SettingsView>(*engine, fakes.ports);
};

// The form.

TEST_F(SettingsViewTest, ShowsTheDefaultsInFiveSections) {
  fakes.powerSources.setBattery(64);
  engine->tick();
  EXPECT_EQ(
      view->form(),
      (std::vector<Section>{
          {"Sleep",
           {{Control::grace, "Wait 2 minutes after work stops",
             Slider{120, 30, 600, 30, "2 minutes", "30 seconds", "10 minutes"}, "",
             "A short pause between build steps won't drop the hold."},
            {Control::keepScreenOn, "Keep the screen on too", Toggle{false}, "",
             "Off by default \u2014 the display sleeps on its own while work continues."},
            {Control::lidClosed, "Work with the lid closed", Toggle{false}, "", kLidCaption}}},
          {"Battery",
           {{Control::battery, "Stop holding below 20%", Slider{20, 0, 50, 5, "20%", "0%", "50%"},
             "", ""},
            {Control::respectLowPower, "Respect Low Power Mode", Toggle{true}, "", ""},
            {Control::rightNow, "Right now", Value{"64% \u00B7 on battery"}, "", ""}}},
          {"Detection",
           {{Control::honorAssertions, "Trust apps that ask to stay awake", Toggle{true}, "",
             "Browsers raise this during downloads; editors during exports."}}},
          {"Apps",
           {{Control::watching, "Watching", Value{"everything"}, "",
             "Choose which apps may keep your Mac awake from the menu bar icon \u2192 Choose "
             "Apps."}}},
          {"", {{Control::launchAtLogin, "Open at login", Toggle{false}, "", ""}}}}));
}

TEST_F(SettingsViewTest, ShowsWhatIsStored) {
  fakes.defaults.stored = {{"graceSeconds", Integer{90}}, {"batteryThreshold", Integer{5}},
                           {"respectLowPower", false},    {"keepScreenOn", true},
                           {"honorAppAssertions", false}, {"allowLidClosed", true},
                           {"launchAtLogin", true}};
  view = std::make_unique<SettingsView>(*engine, fakes.ports);
  EXPECT_EQ(knob(Control::grace), 90);
  EXPECT_EQ(knob(Control::battery), 5);
  EXPECT_FALSE(isOn(Control::respectLowPower));
  EXPECT_TRUE(isOn(Control::keepScreenOn));
  EXPECT_FALSE(isOn(Control::honorAssertions));
  EXPECT_TRUE(isOn(Control::lidClosed));
  EXPECT_TRUE(isOn(Control::launchAtLogin));
  EXPECT_TRUE(fakes.calls->only({"register login item"}).empty()) << "showing acts on nothing";
  EXPECT_TRUE(fakes.scripts.sources.empty());
  EXPECT_TRUE(fakes.defaults.written.empty());
}

TEST_F(SettingsViewTest, ReadsTheStoreOnceWhenItIsMade) {
  fakes.defaults.stored = {{"graceSeconds", Integer{600}}, {"batteryThreshold", Integer{50}},
                           {"respectLowPower", false},     {"keepScreenOn", true},
                           {"honorAppAssertions", false},  {"allowLidClosed", true},
                           {"launchAtLogin", true}};
  EXPECT_EQ(knob(Control::grace), 120);
  EXPECT_EQ(knob(Control::battery), 20);
  EXPECT_TRUE(isOn(Control::respectLowPower));
  EXPECT_FALSE(isOn(Control::keepScreenOn));
  EXPECT_TRUE(isOn(Control::honorAssertions));
  EXPECT_FALSE(isOn(Control::lidClosed));
  EXPECT_FALSE(isOn(Control::launchAtLogin));
}

TEST(SettingsView, FormatsAGracePeriodInWords) {
  const auto formatted = SettingsView::formatted;
  EXPECT_EQ(formatted(0), "0 seconds");
  EXPECT_EQ(formatted(1), "1 seconds");
  EXPECT_EQ(formatted(30), "30 seconds");
  EXPECT_EQ(formatted(45), "45 seconds");
  EXPECT_EQ(formatted(59), "59 seconds");
  EXPECT_EQ(formatted(60), "1 minute");
  EXPECT_EQ(formatted(61), "1 minutes");
  EXPECT_EQ(formatted(90), "1 minutes");
  EXPECT_EQ(formatted(119), "1 minutes");
  EXPECT_EQ(formatted(120), "2 minutes");
  EXPECT_EQ(formatted(150), "2 minutes");
  EXPECT_EQ(formatted(600), "10 minutes");
  EXPECT_EQ(formatted(-5), "-5 seconds");
}

TEST_F(SettingsViewTest, NamesTheGracePeriodAsTheSliderMoves) {
  view->setValue(Control::grace, 30);
  EXPECT_EQ(label(Control::grace), "Wait 30 seconds after work stops");
  view->setValue(Control::grace, 60);
  EXPECT_EQ(label(Control::grace), "Wait 1 minute after work stops");
  view->setValue(Control::grace, 90);
  EXPECT_EQ(label(Control::grace), "Wait 1 minutes after work stops");
  view->setValue(Control::grace, 600);
  EXPECT_EQ(label(Control::grace), "Wait 10 minutes after work stops");
}

TEST_F(SettingsViewTest, WithoutABatteryItIsPluggedInRightNow) {
  engine->powerState().set({false, 64, false, false});
  EXPECT_EQ(text(Control::rightNow), "plugged in");
}

TEST_F(SettingsViewTest, TellsTheChargeRightNow) {
  engine->powerState().set({false, 64, false, true});
  EXPECT_EQ(text(Control::rightNow), "64% \u00B7 on battery");
  engine->powerState().set({true, 100, false, true});
  EXPECT_EQ(text(Control::rightNow), "100% \u00B7 plugged in");
  engine->powerState().set({true, 0, true, true});
  EXPECT_EQ(text(Control::rightNow), "0% \u00B7 plugged in");
}

TEST_F(SettingsViewTest, TellsHowManyAppsTheStoreIgnoresNow) {
  EXPECT_EQ(text(Control::watching), "everything");
  fakes.defaults.stored["ignoredApps"] = Texts{"a", "b"};
  EXPECT_EQ(text(Control::watching), "all but 2");
  fakes.defaults.stored["ignoredApps"] = Texts{"a", "a", "a"};
  EXPECT_EQ(text(Control::watching), "all but 1");
  fakes.defaults.stored["ignoredApps"] = Texts{};
  EXPECT_EQ(text(Control::watching), "everything");
}

// Sliders.

TEST_F(SettingsViewTest, StoresAMovedSliderAtOnceUnderItsKeyAlone) {
  view->setValue(Control::grace, 300);
  EXPECT_EQ(stored("graceSeconds"), PropertyValue(Integer{300}));
  EXPECT_EQ(fakes.defaults.written, Texts{"graceSeconds"});
  view->setValue(Control::battery, 45);
  EXPECT_EQ(stored("batteryThreshold"), PropertyValue(Integer{45}));
  EXPECT_EQ(fakes.defaults.written, (Texts{"graceSeconds", "batteryThreshold"}));
  EXPECT_EQ(knob(Control::grace), 300);
  EXPECT_EQ(label(Control::battery), "Stop holding below 45%");
}

TEST_F(SettingsViewTest, OffersTheBatteryFloorInStepsOfFive) {
  for (Integer percent = 0; percent <= 50; percent += 5) {
    view->setValue(Control::battery, percent);
    EXPECT_EQ(label(Control::battery), "Stop holding below " + std::to_string(percent) + "%");
    EXPECT_EQ(knob(Control::battery), percent);
  }
  view->setValue(Control::battery, 0);
  EXPECT_EQ(label(Control::battery), "Stop holding below 0%");
}

TEST_F(SettingsViewTest, BringsAValueToTheNearestOneThatTheSliderOffers) {
  const std::vector<std::pair<Integer, Integer>> wantedAndStored = {
      {kLeast, 30}, {700, 600}, {0, 30}, {kMost, 600}, {44, 30}, {46, 60}, {599, 600}, {-1, 30}};
  for (const auto& [wanted, expected] : wantedAndStored) {
    view->setValue(Control::grace, wanted);
    EXPECT_EQ(knob(Control::grace), expected) << wanted;
    EXPECT_EQ(stored("graceSeconds"), PropertyValue(expected)) << wanted;
  }
  view->setValue(Control::battery, 52);
  EXPECT_EQ(knob(Control::battery), 50);
  view->setValue(Control::battery, 47);
  EXPECT_EQ(knob(Control::battery), 45);
  view->setValue(Control::battery, -10);
  EXPECT_EQ(knob(Control::battery), 0);
}

TEST_F(SettingsViewTest, ASliderHasItsValueInWords) {
  const auto words = [this](Control control) {
    return std::get<Slider>(row(control).content).text;
  };
  view->setValue(Control::grace, 30);
  view->setValue(Control::battery, 0);
  EXPECT_EQ(words(Control::grace), "30 seconds");
  EXPECT_EQ(words(Control::battery), "0%");
  open("batteryThreshold", Integer{-3});
  EXPECT_EQ(words(Control::battery), "-3%") << "what is stored, as in the label";
}

TEST_F(SettingsViewTest, ASliderThatStaysWhereItIsStoresNothing) {
  view->setValue(Control::grace, 120);
  view->setValue(Control::grace, 125);
  view->setValue(Control::battery, 20);
  EXPECT_TRUE(fakes.defaults.written.empty());
}

TEST_F(SettingsViewTest, ShowsAValueOutOfRangeAtTheNearestEndAndNamesItAsStored) {
  open("graceSeconds", Integer{7});
  EXPECT_EQ(row(Control::grace).content,
            (std::variant<Slider, Toggle, Value>(
                Slider{30, 30, 600, 30, "7 seconds", "30 seconds", "10 minutes"})));
  EXPECT_EQ(label(Control::grace), "Wait 7 seconds after work stops");
  open("graceSeconds", Integer{10000});
  EXPECT_EQ(knob(Control::grace), 600);
  EXPECT_EQ(label(Control::grace), "Wait 166 minutes after work stops");
  open("batteryThreshold", Integer{-3});
  EXPECT_EQ(knob(Control::battery), 0);
  EXPECT_EQ(label(Control::battery), "Stop holding below -3%");
  open("batteryThreshold", kMost);
  EXPECT_EQ(knob(Control::battery), 50);
  EXPECT_EQ(label(Control::battery), "Stop holding below 9223372036854775807%");
  EXPECT_TRUE(fakes.defaults.written.empty());
}

TEST_F(SettingsViewTest, ShowsAValueBetweenTwoStepsWhereItLies) {
  open("graceSeconds", Integer{45});
  EXPECT_EQ(knob(Control::grace), 45);
  EXPECT_EQ(label(Control::grace), "Wait 45 seconds after work stops");
  open("batteryThreshold", Integer{23});
  EXPECT_EQ(knob(Control::battery), 23);
  EXPECT_EQ(label(Control::battery), "Stop holding below 23%");
}

TEST_F(SettingsViewTest, AKnobThatIsPutWhereItStandsLeavesTheStoredValueAlone) {
  open("graceSeconds", Integer{7});
  view->setValue(Control::grace, 30);
  view->setValue(Control::grace, 7);
  open("batteryThreshold", Integer{23});
  view->setValue(Control::battery, 23);
  EXPECT_TRUE(fakes.defaults.written.empty());
  view->setValue(Control::battery, 24);
  EXPECT_EQ(stored("batteryThreshold"), PropertyValue(Integer{25}));
}

// Toggles.

TEST_F(SettingsViewTest, StoresAFlippedToggleAtOnceUnderItsKeyAlone) {
  view->setOn(Control::keepScreenOn, true);
  EXPECT_EQ(stored("keepScreenOn"), PropertyValue(true));
  view->setOn(Control::respectLowPower, false);
  EXPECT_EQ(stored("respectLowPower"), PropertyValue(false));
  view->setOn(Control::honorAssertions, false);
  EXPECT_EQ(stored("honorAppAssertions"), PropertyValue(false));
  EXPECT_EQ(fakes.defaults.written,
            (Texts{"keepScreenOn", "respectLowPower", "honorAppAssertions"}));
  EXPECT_TRUE(isOn(Control::keepScreenOn));
  EXPECT_FALSE(isOn(Control::respectLowPower));
  EXPECT_FALSE(isOn(Control::honorAssertions));
}

TEST_F(SettingsViewTest, AToggleThatStaysAsItIsDoesNothing) {
  for (const Control control : {Control::keepScreenOn, Control::lidClosed, Control::launchAtLogin})
    view->setOn(control, false);
  for (const Control control : {Control::respectLowPower, Control::honorAssertions})
    view->setOn(control, true);
  EXPECT_TRUE(fakes.calls->all().empty());
  EXPECT_EQ(fakes.mainLoop.posted(), 0U);
}

TEST_F(SettingsViewTest, FlippingTwiceRestoresTheForm) {
  const std::vector<Section> before = view->form();
  for (const Control control :
       {Control::keepScreenOn, Control::respectLowPower, Control::honorAssertions,
        Control::lidClosed, Control::launchAtLogin}) {
    const bool was = isOn(control);
    view->setOn(control, !was);
    EXPECT_NE(view->form(), before);
    view->setOn(control, was);
    EXPECT_EQ(view->form(), before);
  }
}

TEST_F(SettingsViewTest, AControlOfAnotherKindIgnoresWhatItIsTold) {
  for (const Control control : allControls()) {
    const bool isSlider = control == Control::grace || control == Control::battery;
    if (!isSlider) view->setValue(control, 1);
  }
  for (const Control control :
       {Control::grace, Control::battery, Control::rightNow, Control::watching}) {
    view->setOn(control, true);
    view->setOn(control, false);
  }
  EXPECT_TRUE(fakes.calls->all().empty());
}

TEST_F(SettingsViewTest, ChangesCountFromTheNextTickOn) {
  engine->tick();
  EXPECT_EQ(fakes.power.live.size(), 1U);
  view->setOn(Control::keepScreenOn, true);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(fakes.power.live.size(), 1U);
  engine->tick();
  EXPECT_EQ(fakes.power.live.size(), 2U);
}

// Working with the lid closed.

TEST_F(SettingsViewTest, AllowsTheLidToBeClosedAndThenStoresIt) {
  view->setOn(Control::lidClosed, true);
  EXPECT_EQ(asked(), "1");
  EXPECT_EQ(stored("allowLidClosed"), PropertyValue(true));
  EXPECT_TRUE(isOn(Control::lidClosed));
  EXPECT_EQ(row(Control::lidClosed).error, "");
  fakes.mainLoop.runPosted();
  EXPECT_EQ(asked(), "1") << "and asks no more";
}

TEST_F(SettingsViewTest, ForbidsTheLidToBeClosedAndThenStoresIt) {
  open("allowLidClosed", true);
  view->setOn(Control::lidClosed, false);
  EXPECT_EQ(asked(), "0");
  EXPECT_EQ(stored("allowLidClosed"), PropertyValue(false));
  EXPECT_FALSE(isOn(Control::lidClosed));
}

TEST_F(SettingsViewTest, UsesTheLidSwitchWhereThereIsOne) {
  fakes.useLidSwitch();
  view->setOn(Control::lidClosed, true);
  EXPECT_TRUE(fakes.lidSwitch.held);
  EXPECT_EQ(stored("allowLidClosed"), PropertyValue(true));
  view->setOn(Control::lidClosed, false);
  EXPECT_FALSE(fakes.lidSwitch.held);
  EXPECT_EQ(stored("allowLidClosed"), PropertyValue(false));
}

TEST_F(SettingsViewTest, ADeclinedApprovalFlipsTheToggleBackAndSaysSo) {
  answer({false});
  view->setOn(Control::lidClosed, true);
  EXPECT_FALSE(isOn(Control::lidClosed));
  EXPECT_EQ(row(Control::lidClosed).error, kDeclined);
  EXPECT_EQ(row(Control::lidClosed).caption, kLidCaption);
  EXPECT_FALSE(isStored("allowLidClosed"));
  EXPECT_EQ(asked(), "1") << "what follows comes from the loop";
}

TEST_F(SettingsViewTest, TheFlipBackIsActedUponAndItsApprovalClearsTheMessage) {
  answer({false, true});
  view->setOn(Control::lidClosed, true);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(asked(), "10");
  EXPECT_EQ(stored("allowLidClosed"), PropertyValue(false));
  EXPECT_EQ(row(Control::lidClosed).error, "");
  EXPECT_FALSE(isOn(Control::lidClosed));
}

TEST_F(SettingsViewTest, DecliningTheFlipBackFlipsTheToggleOnAgain) {
  answer({false, false, true});
  view->setOn(Control::lidClosed, true);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(asked(), "101");
  EXPECT_TRUE(isOn(Control::lidClosed));
  EXPECT_EQ(stored("allowLidClosed"), PropertyValue(true));
  EXPECT_EQ(row(Control::lidClosed).error, "");
}

TEST_F(SettingsViewTest, AfterTheThirdDeclinedApprovalTheToggleShowsTheStoredValueAndRests) {
  answer(std::vector<bool>(9, false));
  view->setOn(Control::lidClosed, true);
  for (int pass = 0; pass < 9; ++pass)
    fakes.mainLoop.runPosted();
  EXPECT_EQ(asked(), "101");
  EXPECT_FALSE(isOn(Control::lidClosed));
  EXPECT_EQ(row(Control::lidClosed).error, kDeclined);
  EXPECT_TRUE(fakes.defaults.written.empty());
}

TEST_F(SettingsViewTest, DecliningToSwitchOffRestsAfterThreeApprovalsToo) {
  open("allowLidClosed", true);
  answer(std::vector<bool>(9, false));
  view->setOn(Control::lidClosed, false);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(asked(), "010");
  EXPECT_TRUE(isOn(Control::lidClosed));
}

TEST_F(SettingsViewTest, AToggleAtRestShowsTheValueThatIsStoredByThen) {
  answer(std::vector<bool>(3, false));
  view->setOn(Control::lidClosed, true);
  fakes.defaults.stored["allowLidClosed"] = true;
  fakes.mainLoop.runPosted();
  EXPECT_EQ(asked(), "101");
  EXPECT_TRUE(isOn(Control::lidClosed));
}

TEST_F(SettingsViewTest, AToggleAtRestTriesNothingLater) {
  answer(std::vector<bool>(9, false));
  fakes.mainLoop.timers.clear();
  view->setOn(Control::lidClosed, true);
  fakes.mainLoop.runPosted();
  EXPECT_TRUE(fakes.mainLoop.timers.empty());
}

TEST_F(SettingsViewTest, AToggleAtRestActsOnAChangeAsOnTheFirst) {
  answer(std::vector<bool>(9, false));
  view->setOn(Control::lidClosed, true);
  fakes.mainLoop.runPosted();
  view->setOn(Control::lidClosed, true);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(asked(), "101101");
}

TEST_F(SettingsViewTest, DecliningToSwitchOffLeavesTheStoredValueAsItWas) {
  open("allowLidClosed", true);
  answer({false});
  view->setOn(Control::lidClosed, false);
  EXPECT_TRUE(isOn(Control::lidClosed));
  EXPECT_EQ(row(Control::lidClosed).error, kDeclined);
  EXPECT_TRUE(fakes.defaults.written.empty());
}

TEST_F(SettingsViewTest, AnyFailureOfTheLidSwitchReadsLikeADeclinedApproval) {
  fakes.useLidSwitch();
  fakes.lidSwitch.holdFailure = tidewell::LidSwitch::Failure{false, "no such service"};
  view->setOn(Control::lidClosed, true);
  EXPECT_FALSE(isOn(Control::lidClosed));
  EXPECT_EQ(row(Control::lidClosed).error, kDeclined);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(fakes.calls->only({"hold lid", "release lid"}), (Texts{"hold lid", "release lid"}));
  EXPECT_EQ(row(Control::lidClosed).error, kDeclined) << "that letting go succeeds says nothing";
  fakes.lidSwitch.holdFailure.reset();
  view->setOn(Control::lidClosed, true);
  EXPECT_EQ(row(Control::lidClosed).error, "");
}

TEST_F(SettingsViewTest, TellsTheRealReasonOfAFailureOfTheLidSwitchBesideTheText) {
  fakes.useLidSwitch();
  fakes.lidSwitch.holdFailure = tidewell::LidSwitch::Failure{false, "the desktop handles the lid"};
  fakes.lidSwitch.reason = "the desktop handles the lid";
  view->setOn(Control::lidClosed, true);
  EXPECT_EQ(row(Control::lidClosed).error,
            std::string(kDeclined) + " In fact: the desktop handles the lid.");
}

TEST_F(SettingsViewTest, SaysUnderTheControlThatWasChangedThatItCannotBeSaved) {
  fakes.defaults.problem = "the disk is full";
  EXPECT_EQ(row(Control::grace).error, "") << "nothing was changed here";
  view->setValue(Control::grace, 300);
  EXPECT_EQ(row(Control::grace).error,
            "Cannot be saved: the disk is full. It counts until Staylit ends.");
  view->setOn(Control::keepScreenOn, true);
  EXPECT_EQ(row(Control::grace).error, "");
  EXPECT_NE(row(Control::keepScreenOn).error, "");
  fakes.defaults.problem.clear();
  EXPECT_EQ(row(Control::keepScreenOn).error, "");
}

TEST_F(SettingsViewTest, ShowsTheLidAsItIsHeldWhereAProcessHoldsIt) {
  fakes.useLidSwitch();
  open("allowLidClosed", true);
  EXPECT_FALSE(isOn(Control::lidClosed)) << "asked for, and not held";
  int told = 0;
  const Subscription subscription = view->observe([&] { ++told; });
  fakes.lidSwitch.become(true);
  EXPECT_TRUE(isOn(Control::lidClosed));
  fakes.lidSwitch.become(false);
  EXPECT_FALSE(isOn(Control::lidClosed));
  fakes.mainLoop.runPosted();
  EXPECT_GT(told, 0);
  EXPECT_TRUE(fakes.defaults.written.empty());
  view.reset();
  fakes.lidSwitch.become(true);
}

TEST_F(SettingsViewTest, SaysWhetherALidThatIsNotHeldIsTriedAgain) {
  fakes.useLidSwitch();
  open("allowLidClosed", true);
  EXPECT_EQ(row(Control::lidClosed).error, "") << "it stays off";
  fakes.lidSwitch.triedAgain = true;
  fakes.lidSwitch.become(false);
  EXPECT_FALSE(isOn(Control::lidClosed));
  EXPECT_EQ(row(Control::lidClosed).error, "Not in effect now. Staylit goes on trying.");
  fakes.lidSwitch.become(true);
  EXPECT_TRUE(isOn(Control::lidClosed));
  EXPECT_EQ(row(Control::lidClosed).error, "");
  view->setOn(Control::lidClosed, false);
  EXPECT_EQ(row(Control::lidClosed).error, "") << "the user's off stays";
}

/// A lid switch whose system has asked the user, who has not answered yet.
class LidPromptTest : public SettingsViewTest {
 protected:
  void SetUp() override {
    fakes.useLidSwitch();
    fakes.lidSwitch.takesItsTime = true;
    open("graceSeconds", Integer{120});
    view->setOn(Control::lidClosed, true);
  }
  static tidewell::LidSwitch::Failure declined() { return {true, "declined"}; }
};

TEST_F(LidPromptTest, StoresNothingBeforeTheAnswer) {
  fakes.mainLoop.runPosted();
  EXPECT_TRUE(isOn(Control::lidClosed));
  EXPECT_FALSE(isStored("allowLidClosed"));
  EXPECT_EQ(row(Control::lidClosed).error, "");
  fakes.lidSwitch.answer(std::nullopt);
  EXPECT_EQ(stored("allowLidClosed"), PropertyValue(true));
  EXPECT_TRUE(isOn(Control::lidClosed));
}

TEST_F(LidPromptTest, FlipsBackWhenItIsDeclined) {
  fakes.lidSwitch.answer(declined());
  EXPECT_FALSE(isOn(Control::lidClosed));
  EXPECT_EQ(row(Control::lidClosed).error, kDeclined);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(fakes.calls->only({"ask for lid", "release lid"}),
            (Texts{"ask for lid", "release lid"}));
  EXPECT_EQ(stored("allowLidClosed"), PropertyValue(false));
  EXPECT_TRUE(fakes.log.lines().empty()) << "nothing was restored";
}

TEST_F(LidPromptTest, ASecondClickWithdrawsTheRequest) {
  view->setOn(Control::lidClosed, false);
  EXPECT_FALSE(fakes.lidSwitch.asked);
  EXPECT_FALSE(isOn(Control::lidClosed));
  EXPECT_EQ(stored("allowLidClosed"), PropertyValue(false));
  view->setOn(Control::lidClosed, true);
  fakes.lidSwitch.answer(std::nullopt);
  EXPECT_TRUE(isOn(Control::lidClosed));
  EXPECT_EQ(stored("allowLidClosed"), PropertyValue(true));
}

TEST_F(LidPromptTest, AnAnswerIsHarmlessOnceTheViewIsGone) {
  view.reset();
  fakes.lidSwitch.answer(declined());
  EXPECT_FALSE(isStored("allowLidClosed"));
}

TEST_F(SettingsViewTest, AFailureFlipsNothingBackWhenTheUserHasChangedTheToggleMeanwhile) {
  answer({true, false});
  bool isFirst = true;
  fakes.scripts.whileRunning = [&] {
    if (std::exchange(isFirst, false)) view->setOn(Control::lidClosed, false);
  };
  view->setOn(Control::lidClosed, true);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(asked(), "10");
  EXPECT_FALSE(isOn(Control::lidClosed));
}

TEST_F(SettingsViewTest, TheMessageStaysWhileOtherSettingsChange) {
  answer({false});
  view->setOn(Control::lidClosed, true);
  view->setOn(Control::keepScreenOn, true);
  view->setOn(Control::launchAtLogin, true);
  view->setValue(Control::grace, 300);
  EXPECT_EQ(row(Control::lidClosed).error, kDeclined);
  EXPECT_EQ(row(Control::keepScreenOn).error, "");
  EXPECT_EQ(row(Control::launchAtLogin).error, "");
}

TEST_F(SettingsViewTest, AUsersOwnChangeTakesThePlaceOfTheFlipBacks) {
  answer({false, true});
  view->setOn(Control::lidClosed, true);
  view->setOn(Control::lidClosed, true);
  EXPECT_EQ(asked(), "11");
  fakes.mainLoop.runPosted();
  EXPECT_EQ(asked(), "11") << "switching off is not wanted any more";
  EXPECT_TRUE(isOn(Control::lidClosed));
  EXPECT_EQ(stored("allowLidClosed"), PropertyValue(true));
}

TEST_F(SettingsViewTest, TwoDeclinedApprovalsInOnePassAreFollowedByOneFlipBack) {
  answer({false, false, true});
  view->setOn(Control::lidClosed, true);
  view->setOn(Control::lidClosed, true);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(asked(), "110");
}

TEST_F(SettingsViewTest, AFlipBackIsForgottenOnceTheViewIsGone) {
  answer({false});
  view->setOn(Control::lidClosed, true);
  view.reset();
  fakes.mainLoop.runPosted();
  EXPECT_EQ(asked(), "1");
}

TEST_F(SettingsViewTest, TheFlipBackIsShownBeforeItIsActedUpon) {
  answer({false, true});
  std::string askedWhenTold;
  bool wasOn = true;
  const Subscription subscription = view->observe([&] {
    if (!askedWhenTold.empty()) return;
    askedWhenTold = asked();
    wasOn = isOn(Control::lidClosed);
    EXPECT_EQ(row(Control::lidClosed).error, kDeclined);
  });
  view->setOn(Control::lidClosed, true);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(askedWhenTold, "1");
  EXPECT_FALSE(wasOn);
}

// Opening at login.

TEST_F(SettingsViewTest, RegistersForLoginAndThenStoresIt) {
  const Texts inOrder = {"register login item", "write launchAtLogin"};
  view->setOn(Control::launchAtLogin, true);
  EXPECT_EQ(fakes.calls->all(), inOrder);
  EXPECT_EQ(stored("launchAtLogin"), PropertyValue(true));
  EXPECT_TRUE(isOn(Control::launchAtLogin));
  fakes.mainLoop.runPosted();
  EXPECT_EQ(fakes.calls->all(), inOrder);
}

TEST_F(SettingsViewTest, UnregistersFromLoginAndThenStoresIt) {
  open("launchAtLogin", true);
  view->setOn(Control::launchAtLogin, false);
  EXPECT_EQ(fakes.calls->all(), (Texts{"unregister login item", "write launchAtLogin"}));
  EXPECT_EQ(stored("launchAtLogin"), PropertyValue(false));
  EXPECT_FALSE(isOn(Control::launchAtLogin));
}

TEST_F(SettingsViewTest, AFailedRegistrationFlipsTheToggleBackAndIsLoggedAndNotShown) {
  fakes.loginItem.registerFailure = "Operation not permitted";
  view->setOn(Control::launchAtLogin, true);
  EXPECT_FALSE(isOn(Control::launchAtLogin));
  EXPECT_FALSE(isStored("launchAtLogin"));
  EXPECT_EQ(fakes.log.lines(), Texts{"error: launch at login failed: Operation not permitted"});
  EXPECT_EQ(row(Control::launchAtLogin).error, "");
  EXPECT_EQ(row(Control::lidClosed).error, "");
  EXPECT_EQ(loginCalls(), Texts{"register login item"}) << "what follows comes from the loop";
}

TEST_F(SettingsViewTest, TheFlipBackOfARegistrationIsActedUpon) {
  fakes.loginItem.registerFailure = "no";
  view->setOn(Control::launchAtLogin, true);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(loginCalls(), (Texts{"register login item", "unregister login item"}));
  EXPECT_EQ(stored("launchAtLogin"), PropertyValue(false));
  EXPECT_FALSE(isOn(Control::launchAtLogin));
}

TEST_F(SettingsViewTest, AFailedRemovalFlipsTheToggleOnAgainAndRegistersAgain) {
  open("launchAtLogin", true);
  fakes.loginItem.registered = true;
  fakes.loginItem.unregisterFailure = "not now";
  view->setOn(Control::launchAtLogin, false);
  EXPECT_TRUE(isOn(Control::launchAtLogin));
  EXPECT_EQ(fakes.log.lines(), Texts{"error: launch at login failed: not now"});
  fakes.mainLoop.runPosted();
  EXPECT_EQ(loginCalls(), (Texts{"unregister login item", "register login item"}));
  EXPECT_EQ(stored("launchAtLogin"), PropertyValue(true));
}

TEST_F(SettingsViewTest, TheTwoGuardedTogglesAreIndependent) {
  answer({false, true});
  fakes.loginItem.registerFailure = "no";
  view->setOn(Control::lidClosed, true);
  view->setOn(Control::launchAtLogin, true);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(asked(), "10");
  EXPECT_EQ(loginCalls(), (Texts{"register login item", "unregister login item"}));
}

// Observing.

TEST_F(SettingsViewTest, TellsOfItsOwnChangesFromTheMainLoop) {
  int told = 0;
  const Subscription subscription = view->observe([&] { ++told; });
  view->setValue(Control::grace, 300);
  EXPECT_EQ(told, 0);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(told, 1);
  view->setOn(Control::keepScreenOn, true);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(told, 2);
  view->setOn(Control::lidClosed, true);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(told, 3);
  view->setOn(Control::launchAtLogin, true);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(told, 4);
}

TEST_F(SettingsViewTest, TellsWhenAMessageIsCleared) {
  answer({false, true});
  Texts messages;
  const Subscription subscription =
      view->observe([&] { messages.push_back(row(Control::lidClosed).error); });
  view->setOn(Control::lidClosed, true);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(messages, (Texts{kDeclined, ""}));
}

TEST_F(SettingsViewTest, TellsWhenTheFlipBackFlipsOnAgain) {
  answer({false, false, true});
  std::vector<bool> states;
  const Subscription subscription =
      view->observe([&] { states.push_back(isOn(Control::lidClosed)); });
  view->setOn(Control::lidClosed, true);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(states, (std::vector<bool>{false, true, true}));
}

TEST_F(SettingsViewTest, TellsOfANewPowerStateOnceItCanBeRead) {
  Texts seen;
  const Subscription subscription = view->observe([&] { seen.push_back(text(Control::rightNow)); });
  engine->powerState().set({false, 5, false, true});
  fakes.mainLoop.runPosted();
  EXPECT_EQ(seen, Texts{"5% \u00B7 on battery"});
}

TEST_F(SettingsViewTest, TellsNothingWhenNothingWasChanged) {
  int told = 0;
  const Subscription subscription = view->observe([&] { ++told; });
  view->setValue(Control::grace, 120);
  view->setOn(Control::keepScreenOn, false);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(told, 0);
}

}  // namespace
}  // namespace staylit

#include "Staylit/HoldsPrinter.h"

#include <gtest/gtest.h>

#include <optional>

#include "Tests/Fakes/FakeConsole.h"

namespace staylit {
namespace {

TEST(HoldsRequest, AsksInTheFormThatIsWanted) {
  using Form = HoldsRequest::Form;
  EXPECT_EQ(HoldsRequest::in({"staylit", "--holds"}), HoldsRequest{Form::text});
  EXPECT_EQ(HoldsRequest::in({"staylit", "--json", "--holds", "--pause"}),
            HoldsRequest{Form::json});
}

TEST(HoldsRequest, IsNoneUnlessItIsAskedFor) {
  EXPECT_EQ(HoldsRequest::in({"staylit"}), std::nullopt);
  EXPECT_EQ(HoldsRequest::in({"staylit", "--json"}), std::nullopt);
  EXPECT_EQ(HoldsRequest::in({"staylit", "--Holds"}), std::nullopt);
  EXPECT_EQ(HoldsRequest::in({"staylit", "--holds", "--diagnose"}), std::nullopt);
}

class HoldsPrinterTest : public ::testing::Test {
 protected:
  HoldsPrinter::Exit print(HoldsRequest request = {}) {
    return HoldsPrinter::print(report, request, console, {});
  }

  HoldsReport report;
  tidewell::FakeConsole console;
};

TEST_F(HoldsPrinterTest, EndsByWhetherAnythingIsHeld) {
  report.services = {"org.freedesktop.login1"};
  EXPECT_EQ(print(), HoldsPrinter::notHeld);
  report.holds.emplace_back();
  EXPECT_EQ(print(), HoldsPrinter::held);
}

TEST_F(HoldsPrinterTest, EndsInTroubleWhereNobodyCouldBeAsked) {
  EXPECT_EQ(print(), HoldsPrinter::trouble);
}

TEST_F(HoldsPrinterTest, NamesTheSilentAndDoesNotCallNothingWhatTheyMayHave) {
  report.services = {"org.freedesktop.login1"};
  report.silent = {"org.freedesktop.login1"};
  EXPECT_EQ(print(), HoldsPrinter::trouble);
  EXPECT_EQ(console.error, "staylit: org.freedesktop.login1 does not tell what it holds\n");
  report.holds.emplace_back();
  EXPECT_EQ(print(), HoldsPrinter::held);
}

TEST_F(HoldsPrinterTest, PrintsTheReportInTheFormThatIsWanted) {
  print({HoldsRequest::Form::json});
  EXPECT_EQ(console.output, report.json({}) + "\n");
}

TEST_F(HoldsPrinterTest, PrintsTheReportForPeopleLineByLine) {
  print();
  EXPECT_EQ(console.output, report.summary() + "\n\nHolds (0):\n  none\n");
}

}  // namespace
}  // namespace staylit

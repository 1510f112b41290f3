#include "Staylit/Replay/TapeRing.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

#include "Staylit/Replay/TapeFormat.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Fakes/FakePrivateFolder.h"

namespace staylit {
namespace {

using Answer = TapeOutput::Answer;

std::string opening(std::size_t size) {
  return std::string(tapeFormat::kOpening) + std::string(size, 'x');
}

class TapeRingTest : public testing::Test {
 protected:
  TapeRingTest() { fakes.queues.runAtOnce(); }

  std::uint64_t sizeInAll() {
    std::uint64_t size = 0;
    for (const auto& entry : folder->list())
      size += entry.size;
    return size;
  }

  tidewell::FakePorts fakes;
  std::shared_ptr<tidewell::FakePrivateFolder> folder =
      std::make_shared<tidewell::FakePrivateFolder>();
  TapeRing ring{folder, fakes.queues};
};

TEST_F(TapeRingTest, BeginsAFileWithEachOpening) {
  EXPECT_EQ(ring.append(opening(10)), Answer::goOn);
  EXPECT_EQ(ring.append("more"), Answer::goOn);
  ring.append(opening(20));
  ASSERT_EQ(folder->files.size(), 2U);
  EXPECT_EQ(*folder->files.at("ring-0000000001.tape"), opening(10) + "more");
  EXPECT_EQ(*folder->files.at("ring-0000000002.tape"), opening(20));
}

TEST_F(TapeRingTest, AsksForAnotherFileBeforeOneIsTooLarge) {
  Answer answer = ring.append(opening(0));
  while (answer == Answer::goOn)
    answer = ring.append(std::string(8 << 10, 'x'));
  EXPECT_EQ(answer, Answer::beginAnew);
  EXPECT_LE(sizeInAll(), TapeRing::kLargestFile);
  EXPECT_GT(sizeInAll(), TapeRing::kLargestFile / 2);
}

TEST_F(TapeRingTest, KeepsTheNewestFilesWithinItsSize) {
  for (int files = 0; files < 40; ++files) {
    ring.append(opening(200 << 10));
    EXPECT_LE(sizeInAll(), TapeRing::kLargestInAll);
  }
  EXPECT_GE(folder->files.size(), 15U);
  EXPECT_TRUE(folder->files.contains("ring-0000000040.tape"));
  EXPECT_FALSE(folder->files.contains("ring-0000000001.tape"));
}

TEST_F(TapeRingTest, KeepsADayAndNothingElseGoes) {
  ring.append(opening(1));
  folder->ages["ring-0000000001.tape"] = 86'401;
  folder->files["notes"] = std::make_shared<std::string>(TapeRing::kLargestInAll, 'x');
  folder->ages["notes"] = 1'000'000;
  ring.append(opening(1));
  EXPECT_FALSE(folder->files.contains("ring-0000000001.tape"));
  EXPECT_TRUE(folder->files.contains("ring-0000000002.tape"));
  EXPECT_TRUE(folder->files.contains("notes"));
}

TEST_F(TapeRingTest, GoesOnInANewFileAfterAFailureThatIsLoggedOnce) {
  folder->failure = "No space left on device";
  EXPECT_EQ(ring.append(opening(1)), Answer::goOn) << "it is not known yet";
  EXPECT_EQ(ring.append("lost"), Answer::beginAnew);
  ring.append(opening(1));
  EXPECT_EQ(ring.append("lost"), Answer::beginAnew);
  folder->failure.clear();
  EXPECT_EQ(ring.append(opening(3)), Answer::goOn);
  EXPECT_EQ(sizeInAll(), opening(3).size());
  EXPECT_EQ(fakes.log.lines().size(), 1U);
}

TEST(TapeRingOnASlowDiskTest, LosesPiecesInsteadOfWaiting) {
  tidewell::FakePorts fakes;
  const auto folder = std::make_shared<tidewell::FakePrivateFolder>();
  TapeRing ring(folder, fakes.queues);
  ring.append(opening(1));
  int taken = 1;
  while (ring.append("x") == Answer::goOn)
    ++taken;
  EXPECT_EQ(taken, 16);
  EXPECT_TRUE(folder->files.empty());
  fakes.queues.runAtOnce();
  fakes.queues.runAll();
  EXPECT_EQ(folder->files.at("ring-0000000001.tape")->size(), opening(1).size() + 15);
}

}  // namespace
}  // namespace staylit

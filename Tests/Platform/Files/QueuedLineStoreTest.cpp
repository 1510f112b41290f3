#include "Platform/Posix/Files/QueuedLineStore.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "Platform/Linux/Loop/ThreadQueue.h"
#include "Tests/Fakes/FakePorts.h"
#include "Tests/Platform/Support/TemporaryFolder.h"

namespace platform {
namespace {

using namespace std::chrono_literals;
using testing::TemporaryFolder;

std::string storeError(int number) {
  return std::generic_category().message(number);
}

class QueuedLineStoreTest : public ::testing::Test {
 protected:
  std::unique_ptr<QueuedLineStore> make(std::chrono::milliseconds timeout = 10s) {
    return std::make_unique<QueuedLineStore>(LineFiles(folder, storeError), "lines",
                                             std::make_unique<ThreadQueue>("store"), timeout);
  }
  static QueuedLineStore::Line line(std::string text) {
    return [text = std::move(text)](auto) { return text; };
  }
  [[nodiscard]] std::string text() const { return LineFiles::read(folder, storeError).text; }

  tidewell::FakePorts fakes;  ///< For the log.
  TemporaryFolder temporary;
  std::filesystem::path folder = temporary.path() / "history";
};

TEST_F(QueuedLineStoreTest, WritesEverythingInItsOrderBeforeTheEnd) {
  const auto store = make();
  for (int number = 0; number < 100; ++number)
    store->append(line(std::to_string(number)));
  store->finishWriting();
  EXPECT_TRUE(text().starts_with("0\n1\n2\n"));
  EXPECT_TRUE(text().ends_with("98\n99\n"));
  EXPECT_TRUE(fakes.log.lines().empty());
}

TEST_F(QueuedLineStoreTest, WritesWithoutAnOrderlyEnd) {
  make()->append(line("one"));
  EXPECT_EQ(text(), "one\n");
}

TEST_F(QueuedLineStoreTest, ClosesNothingOfOthersWhereItsThreadHasItsOwnDescriptors) {
  auto queue = std::make_unique<ThreadQueue>("store", ThreadQueue::Descriptors::own);
  auto store =
      std::make_unique<QueuedLineStore>(LineFiles(folder, storeError), "lines", std::move(queue));
  store->append(line("one"));
  store->finishWriting();
  std::vector<Descriptor> ours;
  for (int count = 0; count < 50; ++count)
    ours.emplace_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  store.reset();
  for (const Descriptor& descriptor : ours)
    EXPECT_GE(::fcntl(descriptor.get(), F_GETFD), 0) << descriptor.get();
}

TEST_F(QueuedLineStoreTest, TellsALineWhenTheStoreWasWrittenBefore) {
  const auto tells = [](auto lastWritten) { return std::string(lastWritten ? "later" : "first"); };
  const auto store = make();
  store->append(tells);
  store->append(tells);
  store->finishWriting();
  EXPECT_EQ(text(), "first\nlater\n");
}

TEST_F(QueuedLineStoreTest, ComplainsOnceUntilALineIsWrittenAgain) {
  temporary.write("history", "a file is in the way");
  const auto store = make();
  store->append(line("one"));
  store->append(line("two"));
  store->finishWriting();
  const std::string complaint =
      "error: lines cannot be written to " + folder.string() + ": Not a directory";
  EXPECT_EQ(fakes.log.lines(), std::vector<std::string>{complaint});
  std::filesystem::remove(folder);
  store->append(line("three"));
  store->finishWriting();
  EXPECT_EQ(text(), "one\ntwo\nthree\n") << "what could not be written is not lost";
  std::filesystem::remove_all(folder);
  temporary.write("history", "again");
  store->append(line("four"));
  store->finishWriting();
  EXPECT_EQ(fakes.log.lines().size(), 2U);
}

TEST_F(QueuedLineStoreTest, KeepsTheNewestLinesUntilTheyCanBeWritten) {
  temporary.write("history", "a file is in the way");
  const auto store = make();
  for (int number = 1; number <= 300; ++number)
    store->append(line(std::to_string(number)));
  store->finishWriting();
  std::filesystem::remove(folder);
  store->append(line("301"));
  store->finishWriting();
  const std::string all = text();
  EXPECT_TRUE(all.starts_with("46\n47\n")) << all;
  EXPECT_TRUE(all.ends_with("300\n301\n"));
}

TEST_F(QueuedLineStoreTest, NeitherWaitsNorEndsWithADiskThatNeverAnswers) {
  auto release = std::make_shared<std::promise<void>>();
  auto store = make(50ms);
  store->append([answer = release->get_future().share()](auto) {
    answer.wait();
    return std::string("late");
  });
  store->append(line("never"));
  store->finishWriting();
  EXPECT_EQ(fakes.log.lines(),
            std::vector<std::string>{"error: lines could not be written in time"});
  store.reset();
  // The queue that was left behind must never go on, not even while the process ends.
  static auto* const kept = new std::shared_ptr(release);
  EXPECT_TRUE(*kept);
}

}  // namespace
}  // namespace platform

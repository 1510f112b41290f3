#include "Staylit/AppsView.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Tests/Fakes/FakePorts.h"
#include "Tests/Staylit/StatusPrinter.h"

namespace staylit {

void PrintTo(const AppsView::Entry& entry, std::ostream* stream) {
  *stream << entry.id << " = " << entry.name << " (" << entry.detail.value_or("-") << ") "
          << rawValue(entry.category) << " " << entry.symbol << (entry.isWorking ? " works" : "");
}

namespace {

using Entry = AppsView::Entry;
using Entries = std::vector<Entry>;
using Integer = std::int64_t;
using Texts = std::vector<std::string>;
using tidewell::AppCategory;
using tidewell::BusyApp;

BusyApp busy(std::string id, std::string display, double cpuPercent,
             AppCategory category = AppCategory::other) {
  BusyApp app;
  app.id = std::move(id);
  app.display = std::move(display);
  app.category = category;
  app.cpuPercent = cpuPercent;
  return app;
}

Texts names(const Entries& entries) {
  Texts result;
  for (const Entry& entry : entries)
    result.push_back(entry.name);
  return result;
}

Texts ids(const Entries& entries) {
  Texts result;
  for (const Entry& entry : entries)
    result.push_back(entry.id);
  return result;
}

class AppsViewTest : public testing::Test {
 protected:
  void ignore(const Texts& list) { fakes.defaults.stored["ignoredApps"] = list; }
  Texts ignored() { return *fakes.defaults.stringList("ignoredApps"); }
  void ignoreEverything() { ignore(ids(view->allEntries())); }
  AppsView::Section first() { return view->sections()[0]; }
  AppsView::Section second() { return view->sections()[1]; }
  Texts found(const std::string& search) {
    view->setSearch(search);
    return names(view->allEntries());
  }

  tidewell::FakePorts fakes;
  std::unique_ptr<StaylitEngine> engine = std::make_unique<StaylitEngine>(fakes.ports);
  std::unique_ptr<AppsView> view = std::make_unique<AppsView>(*engine, fakes.ports);
};

// Rows.

TEST_F(AppsViewTest, ListsTheWholeCatalogueByNameWhateverTheCase) {
  EXPECT_EQ(names(view->allEntries()), (Texts{"Adobe Media Encoder",
                                              "Adobe Premiere Pro",
                                              "After Effects",
                                              "Aider",
                                              "Arc",
                                              "Backblaze",
                                              "cargo / rustc",
                                              "Claude Code",
                                              "Codex",
                                              "Compressor",
                                              "curl / wget",
                                              "DaVinci Resolve",
                                              "Docker",
                                              "Dropbox",
                                              "ffmpeg",
                                              "Final Cut Pro",
                                              "Firefox",
                                              "Gemini CLI",
                                              "Google Chrome",
                                              "Google Drive",
                                              "Gradle / Maven",
                                              "HandBrake",
                                              "iCloud Drive",
                                              "Logic Pro",
                                              "make / cmake",
                                              "Microsoft Edge",
                                              "Motion",
                                              "npm / node",
                                              "Ollama",
                                              "OneDrive",
                                              "Python",
                                              "qBittorrent",
                                              "rsync",
                                              "Safari",
                                              "swift / clang",
                                              "Time Machine",
                                              "Transmission",
                                              "Xcode"}));
}

TEST_F(AppsViewTest, ACataloguedAppIsKnownByItsFirstIdentifier) {
  const Entries entries = view->allEntries();
  EXPECT_EQ(*std::ranges::find(entries, "Docker", &Entry::name),
            (Entry{"com.docker.docker", "Docker", std::nullopt, AppCategory::development, "hammer",
                   false}));
  EXPECT_EQ(*std::ranges::find(entries, "curl / wget", &Entry::name),
            (Entry{"curl", "curl / wget", std::nullopt, AppCategory::downloads, "arrow.down.circle",
                   false}));
}

TEST_F(AppsViewTest, ABusyAppThatIsCataloguedAppearsOnceAtTheTopWithItsReason) {
  engine->busyApps().set({busy("com.apple.dt.Xcode", "Xcode", 112, AppCategory::development)});
  const Entries watched = view->watched();
  EXPECT_EQ(watched.size(), 38U);
  EXPECT_EQ(watched[0], (Entry{"com.apple.dt.Xcode", "Xcode", "112% CPU", AppCategory::development,
                               "hammer", true}));
  EXPECT_EQ(std::ranges::count(watched, "Xcode", &Entry::name), 1);
}

TEST_F(AppsViewTest, ABusyAppIsShownAsTheEngineDescribesIt) {
  engine->busyApps().set({busy("firefox", "My Browser", 0, AppCategory::other),
                          busy("com.apple.Safari", "Renamed", 2, AppCategory::syncBackup)});
  const Entries entries = view->allEntries();
  EXPECT_EQ(entries[0],
            (Entry{"firefox", "My Browser", "active", AppCategory::other, "app.dashed", true}));
  EXPECT_EQ(entries[1], (Entry{"com.apple.Safari", "Renamed", "2% CPU", AppCategory::syncBackup,
                               "arrow.triangle.2.circlepath", true}));
  EXPECT_EQ(entries.size(), 39U) << "one of the two is in the catalogue";
}

TEST_F(AppsViewTest, TheLaterOfTwoBusyAppsWithOneIdentifierCounts) {
  engine->busyApps().set({busy("a", "First", 1), busy("a", "Second", 2)});
  const Entries entries = view->allEntries();
  EXPECT_EQ(entries.size(), 39U);
  EXPECT_EQ(entries[0].name, "Second");
}

TEST_F(AppsViewTest, AnIgnoredAppThatNobodyKnowsHasARow) {
  ignore({"com.example.gone"});
  EXPECT_EQ(second().entries, (Entries{{"com.example.gone", "com.example.gone", "not in catalogue",
                                        AppCategory::other, "app.dashed", false}}));
}

TEST_F(AppsViewTest, AnIgnoredAppThatTheCatalogueKnowsByAnotherIdentifierHasARowOfItsOwn) {
  ignore({"com.docker.backend", "PYTHON3"});
  EXPECT_EQ(
      view->ignored(),
      (Entries{
          {"com.docker.backend", "Docker", std::nullopt, AppCategory::development, "hammer", false},
          {"PYTHON3", "Python", std::nullopt, AppCategory::development, "hammer", false}}));
  EXPECT_EQ(view->watched().size(), 38U);
}

TEST_F(AppsViewTest, AnIgnoredAppThatIsBusyKeepsItsReason) {
  engine->busyApps().set({busy("x", "X", 20)});
  ignore({"x"});
  EXPECT_EQ(view->ignored(),
            (Entries{{"x", "X", "20% CPU", AppCategory::other, "app.dashed", true}}));
  EXPECT_EQ(view->watched().size(), 38U);
}

TEST_F(AppsViewTest, TheTwoListsAreSortedWorkingFirstThenByName) {
  engine->busyApps().set({busy("z", "zebra", 1), busy("y", "Yak", 1), busy("b", "bee", 1)});
  ignore({"y", "com.apple.dt.Xcode", "curl", "b", "Aardvark"});
  EXPECT_EQ(names(view->ignored()), (Texts{"bee", "Yak", "Aardvark", "curl / wget", "Xcode"}));
  const Texts watched = names(view->watched());
  EXPECT_EQ(Texts(watched.begin(), watched.begin() + 2), (Texts{"zebra", "Adobe Media Encoder"}));
  EXPECT_EQ(watched.size(), 37U);
}

TEST_F(AppsViewTest, RowsOfOneNameStayInTheirOrder) {
  engine->busyApps().set({busy("3", "same", 1), busy("1", "SAME", 1), busy("2", "Same", 1)});
  const Entries entries = view->allEntries();
  EXPECT_EQ(Texts({entries[0].id, entries[1].id, entries[2].id}), (Texts{"3", "1", "2"}));
}

TEST_F(AppsViewTest, ManyRowsOfOneNameStayInTheirOrder) {
  std::vector<BusyApp> apps;
  Texts expected;
  for (int number = 0; number < 40; ++number) {
    expected.push_back(std::to_string(number));
    apps.push_back(busy(expected.back(), number % 2 == 0 ? "same" : "SAME", 1));
  }
  engine->busyApps().set(apps);
  const Texts listed = ids(view->watched());
  EXPECT_EQ(Texts(listed.begin(), listed.begin() + 40), expected);
}

TEST_F(AppsViewTest, IgnoredRowsOfOneNameStandByIdentifier) {
  ignore({"python3", "PYTHON3", "Python3", "pYTHON3", "PYthon3"});
  EXPECT_EQ(ids(view->ignored()), (Texts{"PYTHON3", "PYthon3", "Python3", "pYTHON3", "python3"}));
}

TEST_F(AppsViewTest, SortsNamesByTheRulesOfTheUsersLanguage) {
  fakes.text.lowercase["\u00C4"] = "a~";
  engine->busyApps().set({busy("1", "Z", 1), busy("2", "\u00C4", 1), busy("3", "B", 1)});
  EXPECT_EQ(Texts({view->allEntries()[0].name, view->allEntries()[1].name}),
            (Texts{"\u00C4", "B"}));
}

TEST_F(AppsViewTest, AnythingMayBeIgnored) {
  ignore({"", " ", "a\nb"});
  EXPECT_EQ(names(view->ignored()), (Texts{"", " ", "a\nb"}));
  fakes.defaults.stored["ignoredApps"] = true;
  EXPECT_TRUE(view->ignored().empty());
}

// Search.

TEST_F(AppsViewTest, FindsANameWhateverTheCaseAndTheBlanksAround) {
  EXPECT_EQ(found("  xcode "), Texts{"Xcode"});
  EXPECT_EQ(found("\t XCODE\t"), Texts{"Xcode"});
  EXPECT_EQ(found("code"), (Texts{"Adobe Media Encoder", "Claude Code", "Codex", "Xcode"}));
  EXPECT_EQ(found("google drive"), Texts{"Google Drive"});
}

TEST_F(AppsViewTest, FindsNothingByIdentifierReasonOrCategory) {
  engine->busyApps().set({busy("com.example.key", "Name", 50)});
  EXPECT_EQ(found("com.example"), Texts{});
  EXPECT_EQ(found("com.apple"), Texts{});
  EXPECT_EQ(found("% CPU"), Texts{});
  EXPECT_EQ(found("Downloads"), Texts{});
  EXPECT_EQ(found("name"), Texts{"Name"});
}

TEST_F(AppsViewTest, BlanksAloneFindEverything) {
  EXPECT_EQ(found("").size(), 38U);
  EXPECT_EQ(found(" \t ").size(), 38U);
}

TEST_F(AppsViewTest, BlanksWithinTheSearchAndLineBreaksAreSearchedFor) {
  EXPECT_EQ(found("xco de"), Texts{});
  EXPECT_EQ(found("xcode\n"), Texts{});
  EXPECT_EQ(found("\n"), Texts{});
}

TEST_F(AppsViewTest, TakesTheSearchLiterallyAndNotAsAPattern) {
  EXPECT_EQ(found("."), Texts{});
  EXPECT_EQ(found("npm /"), Texts{"npm / node"});
  EXPECT_EQ(found("*"), Texts{});
}

TEST_F(AppsViewTest, LowersTheCaseAsUnicodeDoes) {
  fakes.text.lowercase["\u00C4"] = "\u00E4";
  engine->busyApps().set({busy("1", "\u00C4pfel", 1)});
  EXPECT_EQ(found("\u00E4PF"), Texts{"\u00C4pfel"});
  EXPECT_EQ(found("\u00C4PFEL"), Texts{"\u00C4pfel"});
}

TEST_F(AppsViewTest, OddSearchesAreHarmless) {
  EXPECT_EQ(found("\xFF\xFE"), Texts{});
  EXPECT_EQ(found(std::string(100000, 'x')), Texts{});
  EXPECT_EQ(found(std::string("\0", 1)), Texts{});
}

TEST_F(AppsViewTest, TheSearchCountsForBothLists) {
  ignore({"com.apple.dt.Xcode"});
  view->setSearch("code");
  EXPECT_EQ(names(view->watched()), (Texts{"Adobe Media Encoder", "Claude Code", "Codex"}));
  EXPECT_EQ(names(view->ignored()), Texts{"Xcode"});
  EXPECT_EQ(view->search(), "code");
}

// The texts around the rows.

TEST_F(AppsViewTest, SaysWhatTheWindowIsForAtItsTop) {
  const AppsView::Header header = view->header();
  EXPECT_EQ(header.title, "Choose Apps");
  EXPECT_EQ(header.subtitle, "Click any app to move it between the two lists.");
  EXPECT_EQ(header.searchSymbol, "magnifyingglass");
  EXPECT_EQ(header.searchPlaceholder, "Search");
  EXPECT_EQ(header.clearSymbol, "xmark.circle.fill");
}

TEST_F(AppsViewTest, HasAListOfWatchedAndAListOfIgnoredApps) {
  ASSERT_EQ(view->sections().size(), 2U);
  EXPECT_EQ(first().title, "Staying awake for");
  EXPECT_EQ(first().subtitle, "These can hold your Mac awake");
  EXPECT_EQ(first().symbol, "cup.and.saucer.fill");
  EXPECT_EQ(first().emptyText, "Nothing is being watched \u2014 your Mac will sleep normally.");
  EXPECT_EQ(first().moveSymbol, "arrow.down.circle");
  EXPECT_EQ(first().moveHint, "Stop staying awake for this");
  EXPECT_EQ(second().title, "Not watching");
  EXPECT_EQ(second().subtitle, "Ignored, however busy they get");
  EXPECT_EQ(second().symbol, "moon.zzz");
  EXPECT_EQ(second().emptyText, "Nothing ignored.");
  EXPECT_EQ(second().moveSymbol, "arrow.up.circle");
  EXPECT_EQ(second().moveHint, "Stay awake for this again");
}

TEST_F(AppsViewTest, WithNothingIgnoredThereIsNothingToWatchAgain) {
  EXPECT_TRUE(second().entries.empty());
  EXPECT_EQ(second().emptyText, "Nothing ignored.");
  EXPECT_EQ(view->footer().text, "Watching everything");
  EXPECT_EQ(view->footer().button, "Watch everything");
  EXPECT_FALSE(view->footer().buttonEnabled);
}

TEST_F(AppsViewTest, WithEverythingIgnoredNothingIsWatched) {
  ignoreEverything();
  EXPECT_TRUE(first().entries.empty());
  EXPECT_EQ(first().emptyText, "Nothing is being watched \u2014 your Mac will sleep normally.");
  EXPECT_EQ(second().entries.size(), 38U);
  EXPECT_EQ(view->footer().text, "38 ignored");
}

TEST_F(AppsViewTest, CountsTheIgnoredAppsBelowTheLists) {
  ignore({"a", "b", "com.apple.Safari"});
  EXPECT_EQ(view->footer().text, "3 ignored");
  EXPECT_TRUE(view->footer().buttonEnabled);
  ignore({"a"});
  EXPECT_EQ(view->footer().text, "1 ignored");
}

TEST_F(AppsViewTest, CountsAllIgnoredAppsBelowTheListsAlsoUnderASearch) {
  ignore({"alpha", "beta", "alphabet"});
  view->setSearch("alpha");
  EXPECT_EQ(second().entries.size(), 2U) << "a list has what the search finds";
  EXPECT_EQ(view->footer().text, "3 ignored");
  view->setSearch("nothing of that name");
  EXPECT_EQ(view->footer().text, "3 ignored");
  EXPECT_TRUE(view->footer().buttonEnabled);
}

TEST_F(AppsViewTest, MovesOneProgramOfARowOfSeveral) {
  view->move("make");
  EXPECT_EQ(ignored(), Texts{"make"});
  view->move("make");
  EXPECT_EQ(ignored(), Texts{});
}

// Moving.

TEST_F(AppsViewTest, MovesAWatchedAppToTheIgnoredOnesAndTicksAtOnce) {
  const Texts inOrder = {"write ignoredApps", "list processes"};
  ignore({"x"});
  fakes.calls->clear();
  view->move("com.apple.dt.Xcode");
  EXPECT_EQ(ignored(), (Texts{"com.apple.dt.Xcode", "x"}));
  EXPECT_EQ(names(view->ignored()), (Texts{"x", "Xcode"}));
  EXPECT_EQ(view->version(), 1);
  EXPECT_EQ(fakes.calls->only(inOrder), inOrder);
}

TEST_F(AppsViewTest, MovesAnIgnoredAppBackAndTicksAtOnce) {
  ignore({"com.apple.dt.Xcode", "x"});
  fakes.calls->clear();
  view->move("x");
  EXPECT_EQ(ignored(), Texts{"com.apple.dt.Xcode"});
  EXPECT_EQ(view->version(), 1);
  EXPECT_EQ(fakes.calls->count("list processes"), 1U);
}

TEST_F(AppsViewTest, TheStatusFollowsAMoveWithoutWaitingForTheTimer) {
  using namespace std::chrono_literals;
  fakes.defaults.stored["sustainSeconds"] = Integer{1};
  auto& process = fakes.processes.add(10, "/opt/grind");
  for (int times = 0; times < 3; ++times) {
    process.usage.userTime += 2'000'000'000;
    fakes.clock.advance(2s);
    engine->tick();
  }
  ASSERT_EQ(engine->status().get(), EngineStatus::holding({"grind"}));
  ASSERT_EQ(view->watched()[0].name, "grind");
  process.usage.userTime += 2'000'000'000;
  fakes.clock.advance(2s);
  view->move("grind");
  EXPECT_EQ(engine->status().get(), EngineStatus::winding(120));
  EXPECT_EQ(names(view->ignored()), Texts{"grind"});
}

TEST_F(AppsViewTest, MovingTwiceRestoresTheList) {
  const Texts before = {"B", "a", "b"};
  for (const std::string& id : Texts{"a", "A", "curl", "", " ", "a\nb", "\u00E9", "\xFF"}) {
    ignore(before);
    view->move(id);
    EXPECT_NE(ignored(), before) << id;
    view->move(id);
    EXPECT_EQ(ignored(), before) << id;
  }
  EXPECT_EQ(view->version(), 16);
}

TEST_F(AppsViewTest, EveryAppIsInExactlyOneListWhereverItIsMoved) {
  engine->busyApps().set({busy("x", "X", 1)});
  Texts known = ids(view->allEntries());
  std::ranges::sort(known);
  for (const std::string& id : known) {
    view->move(id);
    engine->busyApps().set({busy("x", "X", 1)});
    Texts both = ids(view->watched());
    const Texts others = ids(view->ignored());
    EXPECT_EQ(std::ranges::count(others, id), 1);
    both.insert(both.end(), others.begin(), others.end());
    std::ranges::sort(both);
    EXPECT_EQ(both, known);
  }
  EXPECT_TRUE(view->watched().empty());
}

TEST_F(AppsViewTest, WatchingEverythingEmptiesTheIgnoredListAndTicksAtOnce) {
  const Texts inOrder = {"write ignoredApps", "list processes"};
  ignoreEverything();
  fakes.calls->clear();
  view->watchEverything();
  EXPECT_EQ(ignored(), Texts{});
  EXPECT_EQ(view->watched().size(), 38U);
  EXPECT_EQ(view->footer().text, "Watching everything");
  EXPECT_EQ(view->version(), 1);
  EXPECT_EQ(fakes.calls->only(inOrder), inOrder);
}

TEST_F(AppsViewTest, WatchingEverythingAlsoWatchesAppsThatTheSearchHides) {
  ignore({"alpha", "beta"});
  view->setSearch("alpha");
  view->watchEverything();
  EXPECT_EQ(ignored(), Texts{});
}

TEST_F(AppsViewTest, MovingWhilePausedIsStoredThoughNothingIsSampled) {
  engine->setPaused(true);
  fakes.calls->clear();
  view->move("a");
  EXPECT_EQ(names(view->ignored()), Texts{"a"});
  EXPECT_EQ(fakes.calls->count("list processes"), 0U);
}

TEST_F(AppsViewTest, ItsVersionCountsMovesAndNothingElse) {
  EXPECT_EQ(view->version(), 0);
  view->setSearch("x");
  engine->tick();
  ignore({"a"});
  EXPECT_EQ(view->version(), 0);
  view->move("a");
  view->watchEverything();
  EXPECT_EQ(view->version(), 2);
}

// Observing.

TEST_F(AppsViewTest, TellsOfItsOwnChangesFromTheMainLoop) {
  int told = 0;
  engine->setPaused(true);
  const Subscription subscription = view->observe([&] { ++told; });
  view->setSearch("x");
  EXPECT_EQ(told, 0);
  fakes.mainLoop.runPosted();
  EXPECT_EQ(told, 1);
  view->move("a");
  fakes.mainLoop.runPosted();
  EXPECT_EQ(told, 2);
  view->watchEverything();
  fakes.mainLoop.runPosted();
  EXPECT_EQ(told, 3);
}

TEST_F(AppsViewTest, TellsNothingWhenTheSearchStaysTheSame) {
  int told = 0;
  view->setSearch("x");
  const Subscription subscription = view->observe([&] { ++told; });
  view->setSearch("x");
  fakes.mainLoop.runPosted();
  EXPECT_EQ(told, 0);
}

TEST_F(AppsViewTest, TellsOnceOfAMoveAndItsTick) {
  int told = 0;
  const Subscription subscription = view->observe([&] { ++told; });
  view->move("a");
  fakes.mainLoop.runPosted();
  EXPECT_EQ(told, 1);
}

TEST_F(AppsViewTest, NewValuesCanBeReadWhenItTellsOfThem) {
  Texts seen;
  const Subscription subscription =
      view->observe([&] { seen.push_back(view->allEntries()[0].name); });
  engine->busyApps().set({busy("new", "Newcomer", 1)});
  fakes.mainLoop.runPosted();
  EXPECT_EQ(seen, Texts{"Newcomer"});
}

}  // namespace
}  // namespace staylit

#include "Staylit/AppsView.h"

#include <algorithm>
#include <utility>

#include "Staylit/Prefs.h"
#include "Staylit/WatchList.h"
#include "Tidewell/AppCatalog.h"
#include "Tidewell/TextMap.h"
#include "Tidewell/TextReading.h"
#include "Tidewell/Words.h"

namespace staylit {

using tidewell::AppCatalog;
using tidewell::AppCategory;
using tidewell::Words;
using Entry = AppsView::Entry;

namespace {

Entry makeEntry(std::string id, std::string name, AppCategory category) {
  Entry entry;
  entry.id = std::move(id);
  entry.name = std::move(name);
  entry.category = category;
  entry.symbol = symbol(category);
  return entry;
}

/// Entries by their identifiers. They keep the order in which their identifiers were first put.
class EntryTable {
 public:
  [[nodiscard]] bool contains(const std::string& id) const { return positions_.contains(id); }

  /// Replaces the entry of the same identifier.
  void put(Entry entry) {
    const auto [position, isNew] = positions_.try_emplace(entry.id, entries_.size());
    if (isNew) {
      entries_.push_back(std::move(entry));
    } else {
      entries_[position->second] = std::move(entry);
    }
  }

  std::vector<Entry> take() { return std::move(entries_); }

 private:
  std::vector<Entry> entries_;
  tidewell::TextMap<std::size_t> positions_;
};

void addCatalogued(EntryTable& table) {
  for (const tidewell::CatalogEntry& known : AppCatalog::entries()) {
    const std::vector<std::string> identifiers = known.identifiers();
    if (identifiers.empty()) continue;
    table.put(makeEntry(identifiers.front(), known.display, known.category));
  }
}

void addBusy(EntryTable& table, const std::vector<tidewell::BusyApp>& busyApps) {
  for (const tidewell::BusyApp& app : busyApps) {
    Entry entry = makeEntry(app.id, app.display, app.category);
    entry.detail = app.reason(Words::shown());
    entry.isWorking = true;
    table.put(std::move(entry));
  }
}

Entry ignoredEntry(const std::string& id, tidewell::Text& text) {
  if (const tidewell::CatalogEntry* known = AppCatalog::lookup(id, id, text)) {
    return makeEntry(id, known->display, known->category);
  }
  Entry entry = makeEntry(id, id, AppCategory::other);
  // TRANSLATORS: below the name of an application that Staylit's list of applications lacks.
  entry.detail = Words::shown().phrase("not in catalogue");
  return entry;
}

/// An application that is neither known nor running still gets a row, so that the user can take it
/// back.
void addIgnored(EntryTable& table, tidewell::Text& text) {
  const tidewell::TextSet ignored = Prefs::shared().ignoredApps();
  // The order is fixed, so that rows of one name stay where they are.
  std::vector<std::string> ids(ignored.begin(), ignored.end());
  std::ranges::sort(ids);
  for (const std::string& id : ids) {
    if (!table.contains(id)) table.put(ignoredEntry(id, text));
  }
}

void filter(std::vector<Entry>& entries, std::string_view search, tidewell::Text& text) {
  const std::string query = text.lowercased(tidewell::trimmed(search));
  if (query.empty()) return;
  std::erase_if(entries, [&](const Entry& entry) {
    return text.lowercased(entry.name).find(query) == std::string::npos;
  });
}

void sort(std::vector<Entry>& entries, tidewell::Text& text) {
  std::ranges::stable_sort(entries, [&text](const Entry& left, const Entry& right) {
    if (left.isWorking != right.isWorking) return left.isWorking;
    return text.localizedCaseInsensitiveCompare(left.name, right.name) < 0;
  });
}

}  // namespace

AppsView::AppsView(StaylitEngine& engine, tidewell::Ports& ports)
    : engine_(engine), ports_(ports), changes_(engine, *ports.mainLoop) {}

AppsView::~AppsView() = default;

AppsView::Header AppsView::header() const {
  const Words& words = Words::shown();
  // TRANSLATORS: the title of the window.
  return {words.phrase("Choose Apps"),
          words.phrase("Click any app to move it between the two lists."), "magnifyingglass",
          // TRANSLATORS: stands in the empty field for the search.
          words.phrase("Search"), "xmark.circle.fill"};
}

std::vector<AppsView::Section> AppsView::sections() const {
  const Words& words = Words::shown();
  return {
      {words.phrase("Staying awake for"),
       // TRANSLATORS: below the heading "Staying awake for"; "these" are applications.
       words.phrase("These can hold your Mac awake"), "cup.and.saucer.fill",
       words.phrase("Nothing is being watched — your Mac will sleep normally."),
       "arrow.down.circle",
       // TRANSLATORS: the tool tip of an application: what a click does.
       words.phrase("Stop staying awake for this"), watched(),
       // TRANSLATORS: a screen reader says this after the name of one application.
       words.phrase("watching")},
      {// TRANSLATORS: a heading; below it stand the applications that Staylit ignores.
       words.phrase("Not watching"),
       // TRANSLATORS: below the heading "Not watching"; "they" are applications.
       words.phrase("Ignored, however busy they get"), "moon.zzz", words.phrase("Nothing ignored."),
       "arrow.up.circle", words.phrase("Stay awake for this again"), ignored(),
       // TRANSLATORS: a screen reader says this after the name of one application.
       words.phrase("not watching")}};
}

AppsView::Footer AppsView::footer() const {
  const std::size_t count = Prefs::shared().ignoredApps().size();
  const Words& words = Words::shown();
  const std::string ignored = words.phraseFor(
      static_cast<std::int64_t>(count),
      // TRANSLATORS: so many applications are not watched. Beside it stands "Watch everything".
      "{count} ignored", "{count} ignored");
  // TRANSLATORS: what the window says while no application is ignored.
  return {count == 0 ? words.phrase("Watching everything") : ignored,
          // TRANSLATORS: a button that takes back all applications that are not watched.
          words.phrase("Watch everything"), count != 0};
}

void AppsView::setSearch(std::string search) {
  if (search == search_) return;
  search_ = std::move(search);
  changes_.viewChanged();
}

void AppsView::move(const std::string& id) {
  const bool isIgnored = Prefs::shared().ignoredApps().contains(id);
  WatchList::setWatched(id, isIgnored);
  listsChanged();
}

void AppsView::watchEverything() {
  Prefs::shared().setIgnoredApps({});
  listsChanged();
}

void AppsView::listsChanged() {
  ++version_;
  changes_.viewChanged();
  engine_.tick();
}

Subscription AppsView::observe(std::function<void()> changed) {
  return changes_.observe(std::move(changed));
}

std::vector<Entry> AppsView::allEntries() const {
  EntryTable table;
  addCatalogued(table);
  addBusy(table, engine_.busyApps().get());
  addIgnored(table, *ports_.text);
  std::vector<Entry> entries = table.take();
  filter(entries, search_, *ports_.text);
  sort(entries, *ports_.text);
  return entries;
}

std::vector<Entry> AppsView::watched() const {
  return entries(false);
}

std::vector<Entry> AppsView::ignored() const {
  return entries(true);
}

std::vector<Entry> AppsView::entries(bool ignored) const {
  const tidewell::TextSet ignoredApps = Prefs::shared().ignoredApps();
  std::vector<Entry> entries = allEntries();
  std::erase_if(entries,
                [&](const Entry& entry) { return ignoredApps.contains(entry.id) != ignored; });
  return entries;
}

}  // namespace staylit

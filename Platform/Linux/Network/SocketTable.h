#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "Platform/Linux/Network/SocketRecord.h"

namespace platform {

/// Remembers a value for each living socket.
///
/// A socket that one complete listing lacks is kept until a second one lacks it too. The kernel's
/// walk may skip a socket whose neighbour closes meanwhile, and if the socket then came back as a
/// new one, it would be counted twice. There are no more entries than sockets in the last two
/// listings. Nothing is allocated while the number of sockets does not grow.
template <typename Value>
class SocketTable {
 public:
  /// Takes over a listing: `sockets` has ascending cookies, each once. Known sockets keep their
  /// values.
  void follow(std::span<const SocketRecord> sockets, Coverage coverage) {
    former_.swap(entries_);
    entries_.clear();
    auto former = former_.cbegin();
    for (const SocketRecord& socket : sockets) {
      for (; former != former_.cend() && former->cookie < socket.cookie; ++former)
        carryOver(*former, coverage);
      const bool isKnown = former != former_.cend() && former->cookie == socket.cookie;
      entries_.push_back({socket.cookie, true, false, isKnown ? (former++)->value : Value{}});
    }
    for (; former != former_.cend(); ++former)
      carryOver(*former, coverage);
    giveBackMemory();
  }

  /// Calls `visit(index, value)` for each of the sockets that `follow` was last given, in order.
  template <typename Visitor>
  void visitListed(Visitor visit) {
    std::size_t index = 0;
    for (Entry& entry : entries_) {
      if (entry.isListed) visit(index++, entry.value);
    }
  }

  /// The value of a socket, even if the last listing lacked it; null when there is none.
  Value* find(std::uint64_t cookie) {
    const auto place = std::lower_bound(
        entries_.begin(), entries_.end(), cookie,
        [](const Entry& entry, std::uint64_t wanted) { return entry.cookie < wanted; });
    return place == entries_.end() || place->cookie != cookie ? nullptr : &place->value;
  }

  [[nodiscard]] std::size_t size() const { return entries_.size(); }

 private:
  struct Entry {
    std::uint64_t cookie = 0;
    bool isListed = true;
    bool wasMissed = false;  ///< Whether a complete listing lacked it.
    Value value;
  };

  void carryOver(const Entry& entry, Coverage coverage) {
    const bool isMissed = coverage == Coverage::complete;
    if (isMissed && entry.wasMissed) return;
    entries_.push_back({entry.cookie, false, entry.wasMissed || isMissed, entry.value});
  }

  /// Frees memory after a time with very many sockets.
  void giveBackMemory() {
    constexpr std::size_t kSlack = 1024;
    if (entries_.capacity() > 4 * entries_.size() + kSlack) entries_.shrink_to_fit();
    if (former_.capacity() > 4 * entries_.size() + kSlack) std::vector<Entry>().swap(former_);
  }

  std::vector<Entry> entries_;  ///< Ascending by cookie.
  std::vector<Entry> former_;
};

}  // namespace platform

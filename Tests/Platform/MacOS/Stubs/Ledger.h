#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "Tests/Platform/MacOS/Stubs/Value.h"

namespace platform::stub {

/// An object of the stubs. It is there as long as the code under test owns a reference to it, or
/// another object or the stub of a service keeps it.
struct Object {
  using Objects = std::vector<Object*>;
  struct Pairs {
    Objects keys, values;
  };
  /// Numbers with and without a fraction are one type.
  using Number = std::variant<std::int64_t, double>;
  using Content = std::variant<Opaque, bool, Number, std::u16string, Objects, Pairs>;

  Content content;
  std::string origin;  ///< The function that gave it, or what contains it, to the code under test.
  long owned = 0;      ///< References of the code under test.
  long kept = 0;       ///< References of others.
  bool isGone = false;
};

/// Knows every object that the stubs gave away, and complains of each reference that is handled
/// against the platform's rule: what a function with Create or Copy in its name gave is to be
/// released once; what a function with Get in its name gave is not; nothing is used after its last
/// release. An object that is gone stays in memory until the ledger is closed, so that its use is
/// told and not undefined. One thread.
class Ledger {
 public:
  static Ledger& shared();

  /// Makes an object of which nobody has a reference yet.
  Object* make(const Value& value, const std::string& origin);
  Object* make(Object::Content content, const std::string& origin);

  /// References of others than the code under test.
  void keep(Object* object);
  void letGo(Object* object);

  /// Gives the code under test a reference to own, as Create and Copy do.
  CFTypeRef handOver(Object* object);

  /// The object of a constant in the program, which stays; the same for the same text.
  CFTypeRef constant(const char* text);

  void retain(CFTypeRef reference);
  void release(CFTypeRef reference);

  /// The object, for `function` to look at. Null, with a complaint, when there is none any more.
  Object* use(CFTypeRef reference, const char* function);

  /// The same of an object with such a content.
  template <typename Content>
  Content* use(CFTypeRef reference, const char* function) {
    Object* const object = use(reference, function);
    if (object == nullptr) return nullptr;
    Content* const content = std::get_if<Content>(&object->content);
    if (content == nullptr) complain(std::string(function) + ": an object of another type");
    return content;
  }

  void complain(std::string complaint) { complaints_.push_back(std::move(complaint)); }

  /// All complaints since the last time, with those of objects that were never released. Forgets
  /// every object but the constants, so that none may be used any more.
  std::vector<std::string> close();

 private:
  void forgetIfUnused(Object* object);

  std::map<const void*, std::unique_ptr<Object>> objects_;
  std::map<std::string, Object*> constants_;
  std::vector<std::string> complaints_;
};

}  // namespace platform::stub

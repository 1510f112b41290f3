#include "Tests/Platform/MacOS/Stubs/Ledger.h"

#include <type_traits>

#include "Tests/Platform/MacOS/Stubs/Utf16.h"

namespace platform::stub {
namespace {

/// What an object contains.
Object::Objects contained(const Object& object) {
  if (const auto* list = std::get_if<Object::Objects>(&object.content)) return *list;
  const auto* pairs = std::get_if<Object::Pairs>(&object.content);
  if (pairs == nullptr) return {};
  Object::Objects all = pairs->keys;
  all.insert(all.end(), pairs->values.begin(), pairs->values.end());
  return all;
}

}  // namespace

Ledger& Ledger::shared() {
  static Ledger ledger;
  return ledger;
}

Object* Ledger::make(Object::Content content, const std::string& origin) {
  auto object = std::make_unique<Object>();
  object->content = std::move(content);
  object->origin = origin;
  Object* const result = object.get();
  for (Object* const part : contained(*result))
    keep(part);
  objects_.emplace(result, std::move(object));
  return result;
}

Object* Ledger::make(const Value& value, const std::string& origin) {
  const auto content = [&](const auto& plain) -> Object::Content {
    using Plain = std::decay_t<decltype(plain)>;
    if constexpr (std::is_same_v<Plain, List>) {
      Object::Objects objects;
      for (const Value& element : plain)
        objects.push_back(make(element, origin));
      return objects;
    } else if constexpr (std::is_same_v<Plain, Dictionary>) {
      Object::Pairs pairs;
      for (const auto& [key, element] : plain) {
        pairs.keys.push_back(make(key, origin));
        pairs.values.push_back(make(element, origin));
      }
      return pairs;
    } else if constexpr (std::is_arithmetic_v<Plain> && !std::is_same_v<Plain, bool>) {
      return Object::Number(plain);
    } else {
      return plain;
    }
  };
  return make(std::visit(content, value.content), origin);
}

void Ledger::keep(Object* object) {
  ++object->kept;
}

void Ledger::letGo(Object* object) {
  --object->kept;
  forgetIfUnused(object);
}

CFTypeRef Ledger::handOver(Object* object) {
  ++object->owned;
  return object;
}

CFTypeRef Ledger::constant(const char* text) {
  const auto [found, isNew] = constants_.try_emplace(text);
  if (isNew) {
    found->second = make(Object::Content(utf16(text).value_or(u"")), "CFSTR");
    keep(found->second);
  }
  return found->second;
}

void Ledger::retain(CFTypeRef reference) {
  if (Object* const object = use(reference, "CFRetain")) ++object->owned;
}

void Ledger::release(CFTypeRef reference) {
  Object* const object = use(reference, "CFRelease");
  if (object == nullptr) return;
  if (object->owned == 0) {
    complain("CFRelease: nobody here owns the object of " + object->origin);
    return;
  }
  --object->owned;
  forgetIfUnused(object);
}

Object* Ledger::use(CFTypeRef reference, const char* function) {
  const auto found = objects_.find(reference);
  if (reference == nullptr || found == objects_.end()) {
    complain(std::string(function) + (reference == nullptr ? ": null" : ": no object"));
    return nullptr;
  }
  Object* const object = found->second.get();
  if (!object->isGone) return object;
  complain(std::string(function) + ": after the last release of the object of " + object->origin);
  return nullptr;
}

std::vector<std::string> Ledger::close() {
  for (const auto& [reference, object] : objects_) {
    if (object->owned > 0) complain("never released: the object of " + object->origin);
    object->owned = 0;
  }
  std::erase_if(objects_, [](const auto& entry) { return entry.second->origin != "CFSTR"; });
  return std::exchange(complaints_, {});
}

void Ledger::forgetIfUnused(Object* object) {
  if (object->isGone || object->owned > 0 || object->kept > 0) return;
  object->isGone = true;
  for (Object* const part : contained(*object))
    letGo(part);
}

}  // namespace platform::stub

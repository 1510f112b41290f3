#include "Platform/MacOS/UserDefaultsStore.h"

#import <Foundation/Foundation.h>

#include "Platform/MacOS/NSText.h"

namespace platform {
namespace {

NSUserDefaults* store() { return NSUserDefaults.standardUserDefaults; }

/// One property value as an object of the store; nil for what the store cannot hold.
struct StoredObject {
  id operator()(std::monostate) const { return nil; }
  id operator()(bool value) const { return @(value); }
  id operator()(std::int64_t value) const { return @(value); }
  id operator()(double value) const { return @(value); }
  id operator()(const std::string& value) const { return nsString(value); }
  id operator()(const std::vector<std::string>& value) const {
    NSMutableArray<NSString*>* list = [NSMutableArray arrayWithCapacity:value.size()];
    for (const std::string& text : value) {
      [list addObject:nsString(text)];
    }
    return list;
  }
};

void setObject(std::string_view key, id object) { [store() setObject:object forKey:nsString(key)]; }

}  // namespace

void UserDefaultsStore::registerDefaults(const tidewell::PropertyDictionary& defaults) {
  @autoreleasepool {
    NSMutableDictionary<NSString*, id>* registered = [NSMutableDictionary dictionary];
    for (const auto& [key, value] : defaults) {
      registered[nsString(key)] = std::visit(StoredObject{}, value);
    }
    [store() registerDefaults:registered];
  }
}

std::int64_t UserDefaultsStore::integer(std::string_view key) {
  @autoreleasepool {
    return [store() integerForKey:nsString(key)];
  }
}

double UserDefaultsStore::real(std::string_view key) {
  @autoreleasepool {
    return [store() doubleForKey:nsString(key)];
  }
}

bool UserDefaultsStore::boolean(std::string_view key) {
  @autoreleasepool {
    return [store() boolForKey:nsString(key)];
  }
}

std::optional<std::vector<std::string>> UserDefaultsStore::stringList(std::string_view key) {
  @autoreleasepool {
    NSArray<NSString*>* list = [store() stringArrayForKey:nsString(key)];
    if (list == nil) return std::nullopt;
    std::vector<std::string> texts;
    for (NSString* text in list) {
      texts.push_back(utf8(text));
    }
    return texts;
  }
}

void UserDefaultsStore::setInteger(std::string_view key, std::int64_t value) {
  @autoreleasepool {
    setObject(key, @(value));
  }
}

void UserDefaultsStore::setReal(std::string_view key, double value) {
  @autoreleasepool {
    setObject(key, @(value));
  }
}

void UserDefaultsStore::setBoolean(std::string_view key, bool value) {
  @autoreleasepool {
    setObject(key, @(value));
  }
}

void UserDefaultsStore::setStringList(std::string_view key, const std::vector<std::string>& value) {
  @autoreleasepool {
    setObject(key, StoredObject{}(value));
  }
}

}  // namespace platform

#include "Platform/MacOS/Settings/UserDefaultsStore.h"

#include "Platform/MacOS/Text/NSText.h"
#include "Tidewell/Log.h"

namespace platform {
namespace {

/// A property value as an object of the store; nil for a value that the store cannot hold.
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

}  // namespace

void UserDefaultsStore::registerDefaults(const tidewell::PropertyDictionary& defaults) {
  @autoreleasepool {
    NSMutableDictionary<NSString*, id>* registered = [NSMutableDictionary dictionary];
    for (const auto& [key, value] : defaults) {
      registered[nsString(key)] = std::visit(StoredObject{}, value);
    }
    [store_ registerDefaults:registered];
  }
}

std::int64_t UserDefaultsStore::integer(std::string_view key) {
  @autoreleasepool {
    return [store_ integerForKey:nsString(key)];
  }
}

double UserDefaultsStore::real(std::string_view key) {
  @autoreleasepool {
    return [store_ doubleForKey:nsString(key)];
  }
}

bool UserDefaultsStore::boolean(std::string_view key) {
  @autoreleasepool {
    return [store_ boolForKey:nsString(key)];
  }
}

std::optional<std::vector<std::string>> UserDefaultsStore::stringList(std::string_view key) {
  @autoreleasepool {
    NSArray<NSString*>* list = [store_ stringArrayForKey:nsString(key)];
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
    [store_ setObject:@(value) forKey:nsString(key)];
  }
}

void UserDefaultsStore::setReal(std::string_view key, double value) {
  @autoreleasepool {
    [store_ setObject:@(value) forKey:nsString(key)];
  }
}

void UserDefaultsStore::setBoolean(std::string_view key, bool value) {
  @autoreleasepool {
    [store_ setObject:@(value) forKey:nsString(key)];
  }
}

void UserDefaultsStore::setStringList(std::string_view key, const std::vector<std::string>& value) {
  @autoreleasepool {
    [store_ setObject:StoredObject{}(value) forKey:nsString(key)];
  }
}

void UserDefaultsStore::finishWriting() {
  @autoreleasepool {
    if ([store_ synchronize]) return;
    tidewell::Log::error("cannot write the settings");
  }
}

}  // namespace platform

#include "Platform/MacOS/Tasks/FoundationFileManager.h"

#import <Foundation/Foundation.h>

#include "Platform/MacOS/Text/NSText.h"

namespace platform {
namespace {

NSFileManager* files() { return NSFileManager.defaultManager; }

}  // namespace

std::string FoundationFileManager::homeDirectory() {
  @autoreleasepool {
    return utf8(files().homeDirectoryForCurrentUser.path);
  }
}

std::optional<std::string> FoundationFileManager::createDirectory(const std::string& path) {
  @autoreleasepool {
    NSError* error = nil;
    if ([files() createDirectoryAtPath:nsString(path)
            withIntermediateDirectories:YES
                             attributes:nil
                                  error:&error]) {
      return std::nullopt;
    }
    return utf8(error.localizedDescription);
  }
}

std::optional<std::string> FoundationFileManager::writeAtomically(const std::string& path,
                                                                  const std::string& text) {
  @autoreleasepool {
    NSError* error = nil;
    if ([nsString(text) writeToFile:nsString(path)
                         atomically:YES
                           encoding:NSUTF8StringEncoding
                              error:&error]) {
      return std::nullopt;
    }
    return utf8(error.localizedDescription);
  }
}

bool FoundationFileManager::exists(const std::string& path) {
  @autoreleasepool {
    return [files() fileExistsAtPath:nsString(path)];
  }
}

bool FoundationFileManager::remove(const std::string& path) {
  @autoreleasepool {
    return [files() removeItemAtPath:nsString(path) error:nil];
  }
}

}  // namespace platform

#include "Platform/MacOS/Loop/ModalWork.h"

#import <Foundation/Foundation.h>

#include <memory>
#include <utility>

namespace platform {

void performModal(std::function<void()> work) {
  const auto shared = std::make_shared<const std::function<void()>>(std::move(work));
  [NSRunLoop.mainRunLoop performInModes:@[ NSDefaultRunLoopMode ]
                                  block:^{
                                    @autoreleasepool {
                                      (*shared)();
                                    }
                                  }];
}

}  // namespace platform

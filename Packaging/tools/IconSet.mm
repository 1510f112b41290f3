// Draws a picture in all the sizes of a Mac icon: IconSet PICTURE FOLDER.iconset
//
// `iconutil` makes one icon file of the folder.

#import <AppKit/AppKit.h>

#include <cstdio>
#include <initializer_list>

namespace {

NSBitmapImageRep* makeCanvas(NSInteger pixels) {
  return [[NSBitmapImageRep alloc] initWithBitmapDataPlanes:nullptr
                                                 pixelsWide:pixels
                                                 pixelsHigh:pixels
                                              bitsPerSample:8
                                            samplesPerPixel:4
                                                   hasAlpha:YES
                                                   isPlanar:NO
                                             colorSpaceName:NSDeviceRGBColorSpace
                                                bytesPerRow:0
                                               bitsPerPixel:0];
}

NSData* draw(NSImage* picture, NSInteger pixels) {
  NSBitmapImageRep* canvas = makeCanvas(pixels);
  const auto side = static_cast<CGFloat>(pixels);
  [NSGraphicsContext saveGraphicsState];
  NSGraphicsContext.currentContext = [NSGraphicsContext graphicsContextWithBitmapImageRep:canvas];
  [picture drawInRect:NSMakeRect(0, 0, side, side)
             fromRect:NSZeroRect
            operation:NSCompositingOperationCopy
             fraction:1];
  [NSGraphicsContext restoreGraphicsState];
  // A picture that could not be drawn would go unnoticed otherwise.
  if ([canvas colorAtX:pixels / 2 y:pixels / 2].alphaComponent <= 0) return nil;
  return [canvas representationUsingType:NSBitmapImageFileTypePNG properties:@{}];
}

bool write(NSImage* picture, NSInteger pixels, NSString* path) {
  if ([draw(picture, pixels) writeToFile:path atomically:YES]) return true;
  std::fprintf(stderr, "IconSet: cannot draw %s\n", path.UTF8String);
  return false;
}

/// Both resolutions of an icon of so many points.
bool writeIcon(NSImage* picture, NSInteger points, NSString* folder) {
  NSString* name = [NSString stringWithFormat:@"%@/icon_%ldx%ld", folder, points, points];
  return write(picture, points, [name stringByAppendingString:@".png"]) &&
         write(picture, 2 * points, [name stringByAppendingString:@"@2x.png"]);
}

bool makeFolder(NSString* folder) {
  return [NSFileManager.defaultManager createDirectoryAtPath:folder
                                 withIntermediateDirectories:YES
                                                  attributes:nil
                                                       error:nil];
}

}  // namespace

int main(int argc, char** argv) {
  @autoreleasepool {
    if (argc != 3) return 2;
    NSImage* picture = [[NSImage alloc] initWithContentsOfFile:@(argv[1])];
    NSString* folder = @(argv[2]);
    if (picture == nil || !makeFolder(folder)) {
      std::fprintf(stderr, "IconSet: cannot read %s or make %s\n", argv[1], argv[2]);
      return 1;
    }
    for (const NSInteger points : {16, 32, 128, 256, 512}) {
      if (!writeIcon(picture, points, folder)) return 1;
    }
    return 0;
  }
}

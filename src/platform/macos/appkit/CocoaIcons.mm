#include "platform/macos/appkit/CocoaIcons.h"

#include "platform/MainQueue.h"
#include "platform/macos/quartz/Owned.h"

#import <AppKit/AppKit.h>

#include <algorithm>
#include <utility>

namespace orvo {

namespace {

constexpr int largestSize = 512;
constexpr std::size_t bitsPerComponent = 8;
// Alpha, red, green and blue from the highest byte of a number to its lowest.
constexpr std::uint32_t layout = static_cast<std::uint32_t>(kCGImageAlphaPremultipliedFirst) |
                                 static_cast<std::uint32_t>(kCGBitmapByteOrder32Little);

// Stretched to a square, as the rows show it.
std::optional<Picture> drawn(NSImage* icon, int size) {
  const auto edge = static_cast<std::size_t>(size);
  Picture picture{size, size, std::vector<std::uint32_t>(edge * edge)};
  NSRect place = NSMakeRect(0, 0, size, size);
  CGImageRef image = [icon CGImageForProposedRect:&place context:nil hints:nil];
  const Owned<CGColorSpaceRef> colors(CGColorSpaceCreateDeviceRGB());
  const Owned<CGContextRef> context(CGBitmapContextCreate(picture.pixels.data(), edge, edge, bitsPerComponent,
                                                          edge * sizeof(std::uint32_t), colors.get(), layout));
  if (image == nullptr || !context) return std::nullopt;
  CGContextDrawImage(context.get(), CGRectMake(0, 0, size, size), image);
  return picture;
}

std::optional<Picture> pictureOf(std::int32_t processIdentifier, int size) {
  @autoreleasepool {
    NSImage* const icon = [[NSRunningApplication runningApplicationWithProcessIdentifier:processIdentifier] icon];
    if (icon == nil) return std::nullopt;
    return drawn(icon, std::clamp(size, 1, largestSize));
  }
}

}  // namespace

void CocoaIcons::icon(std::int32_t processIdentifier, int size, Answer answer) {
  mainQueue_.post(
      [processIdentifier, size, answer = std::move(answer)] { answer(pictureOf(processIdentifier, size)); });
}

}  // namespace orvo

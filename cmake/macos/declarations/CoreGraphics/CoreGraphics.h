// Own declarations; see README.md.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef double CGFloat;

struct CGPoint {
  CGFloat x;
  CGFloat y;
};
typedef struct CGPoint CGPoint;

struct CGSize {
  CGFloat width;
  CGFloat height;
};
typedef struct CGSize CGSize;

struct CGRect {
  CGPoint origin;
  CGSize size;
};
typedef struct CGRect CGRect;

static inline CGRect CGRectMake(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
  CGRect rect = {{x, y}, {width, height}};
  return rect;
}

typedef struct CGContext* CGContextRef;
typedef struct CGColorSpace* CGColorSpaceRef;
typedef struct CGImage* CGImageRef;

typedef struct __CGEvent* CGEventRef;
typedef struct __CGEventTapProxy* CGEventTapProxy;
typedef uint64_t CGEventMask;
typedef uint32_t CGEventType;
typedef uint32_t CGEventField;
typedef uint32_t CGEventTapLocation;
typedef uint32_t CGEventTapPlacement;
typedef uint32_t CGEventTapOptions;
// The event belongs to the caller; null drops it.
typedef CGEventRef (*CGEventTapCallBack)(CGEventTapProxy proxy, CGEventType type, CGEventRef event, void* userInfo);

// Null without the Accessibility permission. The caller owns the port.
CFMachPortRef CGEventTapCreate(CGEventTapLocation tap, CGEventTapPlacement place, CGEventTapOptions options,
                               CGEventMask eventsOfInterest, CGEventTapCallBack callback, void* userInfo);
void CGEventTapEnable(CFMachPortRef tap, bool enable);
CGPoint CGEventGetLocation(CGEventRef event);
CGEventRef CGEventCreateCopy(CGEventRef event);
int64_t CGEventGetIntegerValueField(CGEventRef event, CGEventField field);
void CGEventSetIntegerValueField(CGEventRef event, CGEventField field, int64_t value);
void CGEventPost(CGEventTapLocation tap, CGEventRef event);

// For the pictures of applications.
enum { kCGImageAlphaPremultipliedFirst = 2, kCGBitmapByteOrder32Little = 2 << 12 };
CGColorSpaceRef CGColorSpaceCreateDeviceRGB(void);
void CGColorSpaceRelease(CGColorSpaceRef space);
CGContextRef CGBitmapContextCreate(void* data, size_t width, size_t height, size_t bitsPerComponent,
                                   size_t bytesPerRow, CGColorSpaceRef space, uint32_t bitmapInfo);
void CGContextRelease(CGContextRef context);
void CGContextDrawImage(CGContextRef context, CGRect rect, CGImageRef image);

#ifdef __cplusplus
}
#endif

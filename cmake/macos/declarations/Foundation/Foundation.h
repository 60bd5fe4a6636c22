// Own declarations; see README.md. Objective-C only.
#pragma once

#include <CoreGraphics/CoreGraphics.h>
#include <objc/NSObject.h>
#include <objc/objc.h>
#include <stddef.h>

#define NS_ENUM(type, name) enum name : type name; enum name : type
// As the SDK has it in C++, where combined bits are no longer of the enumeration's type.
#define NS_OPTIONS(type, name) type name; enum : type
#ifdef __cplusplus
#define FOUNDATION_EXPORT extern "C"
#else
#define FOUNDATION_EXPORT extern
#endif

typedef CGPoint NSPoint;
typedef CGSize NSSize;
typedef CGRect NSRect;
typedef double NSTimeInterval;
static inline NSPoint NSMakePoint(CGFloat x, CGFloat y) {
  NSPoint point = {x, y};
  return point;
}
#define NSMakeRect CGRectMake

@class NSArray<ObjectType>, NSBundle, NSData, NSDictionary<KeyType, ObjectType>, NSError, NSNotification, NSString, NSURL;

@interface NSObject (OrvoDeclarations)
- (void)addObserver:(NSObject*)observer forKeyPath:(NSString*)path options:(NSUInteger)options context:(void*)context;
- (void)removeObserver:(NSObject*)observer forKeyPath:(NSString*)path;
- (void)observeValueForKeyPath:(NSString*)path ofObject:(id)object change:(NSDictionary*)change context:(void*)context;
- (void)performSelectorOnMainThread:(SEL)selector withObject:(id)argument waitUntilDone:(BOOL)wait;
@end

enum { NSKeyValueObservingOptionNew = 1, NSKeyValueObservingOptionOld = 2 };
FOUNDATION_EXPORT NSString* const NSKeyValueChangeNewKey;
FOUNDATION_EXPORT NSString* const NSKeyValueChangeOldKey;

typedef struct {
  unsigned long state;
  __unsafe_unretained id* itemsPtr;
  unsigned long* mutationsPtr;
  unsigned long extra[5];
} NSFastEnumerationState;

@protocol NSCopying
@end
@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(__unsafe_unretained id[])buffer
                                    count:(NSUInteger)count;
@end

typedef NS_ENUM(NSInteger, NSComparisonResult) { NSOrderedAscending = -1, NSOrderedSame = 0, NSOrderedDescending = 1 };
typedef NSUInteger NSStringEncoding;
enum { NSUTF8StringEncoding = 4 };

@interface NSString : NSObject <NSCopying>
@property(readonly) const char* UTF8String;
- (instancetype)initWithBytes:(const void*)bytes length:(NSUInteger)length encoding:(NSStringEncoding)encoding;
- (BOOL)isEqualToString:(NSString*)other;
- (NSComparisonResult)localizedStandardCompare:(NSString*)other;
- (BOOL)localizedCaseInsensitiveContainsString:(NSString*)other;
@end

@interface NSNumber : NSObject
@property(readonly) double doubleValue;
+ (NSNumber*)numberWithInt:(int)value;
@end

@interface NSData : NSObject
@property(readonly) NSUInteger length;
@property(readonly) const void* bytes;
+ (instancetype)dataWithBytes:(const void*)bytes length:(NSUInteger)length;
@end

@interface NSArray<__covariant ObjectType> : NSObject <NSCopying, NSFastEnumeration>
@property(readonly) NSUInteger count;
- (BOOL)containsObject:(ObjectType)object;
+ (instancetype)arrayWithObjects:(ObjectType)first, ... __attribute__((sentinel));
@end

@interface NSMutableArray<ObjectType> : NSArray<ObjectType>
+ (instancetype)arrayWithCapacity:(NSUInteger)capacity;
- (void)addObject:(ObjectType)object;
@end

@interface NSMutableSet<ObjectType> : NSObject
- (BOOL)containsObject:(ObjectType)object;
- (void)addObject:(ObjectType)object;
- (void)removeObject:(ObjectType)object;
@end

@interface NSDictionary<__covariant KeyType, __covariant ObjectType> : NSObject <NSCopying, NSFastEnumeration>
- (ObjectType)objectForKey:(KeyType)key;
@end

@interface NSError : NSObject
@property(readonly, copy) NSString* domain;
@property(readonly) NSInteger code;
@property(readonly, copy) NSString* localizedDescription;
@end

@interface NSException : NSObject
@property(readonly, copy) NSString* reason;
@end

@interface NSURL : NSObject
@property(readonly, copy) NSString* path;
@property(readonly, copy) NSURL* URLByResolvingSymlinksInPath;
@property(readonly, copy) NSURL* URLByStandardizingPath;
+ (instancetype)URLWithString:(NSString*)text;
+ (instancetype)fileURLWithPath:(NSString*)path;
@end

@interface NSBundle : NSObject
@property(class, readonly, strong) NSBundle* mainBundle;
@property(readonly, copy) NSString* bundleIdentifier;
@property(readonly, copy) NSURL* bundleURL;
- (id)objectForInfoDictionaryKey:(NSString*)key;
@end

// A set of bits.
typedef NS_ENUM(uint64_t, NSActivityOptions) { NSActivityUserInitiatedAllowingIdleSystemSleep = 0x00EFFFFF };

@interface NSProcessInfo : NSObject
@property(class, readonly, strong) NSProcessInfo* processInfo;
@property(readonly, copy) NSArray* arguments;
@property(readonly, copy) NSString* operatingSystemVersionString;
@property(readonly) int processIdentifier;
- (id)beginActivityWithOptions:(NSActivityOptions)options reason:(NSString*)reason;
@end

@interface NSFileManager : NSObject
@property(class, readonly, strong) NSFileManager* defaultManager;
@property(readonly, copy) NSURL* homeDirectoryForCurrentUser;
@end

@interface NSUserDefaults : NSObject
@property(class, readonly, strong) NSUserDefaults* standardUserDefaults;
- (NSData*)dataForKey:(NSString*)key;
- (BOOL)boolForKey:(NSString*)key;
- (void)setObject:(id)value forKey:(NSString*)key;
- (void)setBool:(BOOL)value forKey:(NSString*)key;
@end

@interface NSNotification : NSObject
@property(readonly, copy) NSDictionary* userInfo;
@end

@interface NSOperationQueue : NSObject
@property(class, readonly, strong) NSOperationQueue* mainQueue;
@end

@interface NSNotificationCenter : NSObject
@property(class, readonly, strong) NSNotificationCenter* defaultCenter;
- (id<NSObject>)addObserverForName:(NSString*)name
                            object:(id)object
                             queue:(NSOperationQueue*)queue
                        usingBlock:(void (^)(NSNotification* notification))block;
- (void)removeObserver:(id)observer;
@end

FOUNDATION_EXPORT SEL NSSelectorFromString(NSString* name);
FOUNDATION_EXPORT Class NSClassFromString(NSString* name);
FOUNDATION_EXPORT void NSLog(NSString* format, ...) __attribute__((format(__NSString__, 1, 2)));

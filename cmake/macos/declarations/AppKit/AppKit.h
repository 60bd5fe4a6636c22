// Own declarations; see README.md. Objective-C only.
#pragma once

#import <Foundation/Foundation.h>

typedef struct CGImage* CGImageRef;

@class NSApplication, NSEvent, NSImage, NSMenu, NSMenuItem, NSRunningApplication, NSWindow;

typedef NS_ENUM(NSUInteger, NSEventType) {
  NSEventTypeLeftMouseDown = 1,
  NSEventTypeLeftMouseUp = 2,
  NSEventTypeRightMouseDown = 3,
  NSEventTypeRightMouseUp = 4,
  NSEventTypeKeyDown = 10,
};
typedef unsigned long long NSEventMask;
typedef NS_ENUM(NSInteger, NSApplicationActivationPolicy) {
  NSApplicationActivationPolicyRegular = 0,
  NSApplicationActivationPolicyAccessory = 1,
};
typedef NSUInteger NSStatusItemBehavior;

FOUNDATION_EXPORT NSString* const NSApplicationDidChangeScreenParametersNotification;
FOUNDATION_EXPORT NSString* const NSWorkspaceDidLaunchApplicationNotification;
FOUNDATION_EXPORT NSString* const NSWorkspaceDidTerminateApplicationNotification;
FOUNDATION_EXPORT NSString* const NSWorkspaceApplicationKey;
FOUNDATION_EXPORT NSString* const NSWorkspaceWillSleepNotification;
FOUNDATION_EXPORT NSString* const NSWorkspaceDidWakeNotification;
FOUNDATION_EXPORT NSString* const NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification;
FOUNDATION_EXPORT NSString* const NSPasteboardTypeString;
FOUNDATION_EXPORT NSString* const NSAppearanceNameAqua;
FOUNDATION_EXPORT NSString* const NSAppearanceNameDarkAqua;

@interface NSEvent : NSObject
@property(readonly) NSEventType type;
@end

@interface NSResponder : NSObject
- (void)keyDown:(NSEvent*)event;
@end

@interface NSView : NSResponder
@property(readonly) NSRect bounds;
@property(readonly) NSWindow* window;
@end

@interface NSControl : NSView
@property(weak) id target;
@property SEL action;
- (NSInteger)sendActionOn:(NSEventMask)mask;
@end

@interface NSButton : NSControl
@property(strong) NSImage* image;
@property(copy) NSString* toolTip;
- (void)setAccessibilityLabel:(NSString*)label;
- (void)setAccessibilityIdentifier:(NSString*)identifier;
@end

@interface NSStatusBarButton : NSButton
@end

@interface NSStatusItem : NSObject
@property(readonly, strong) NSStatusBarButton* button;
@property(copy) NSString* autosaveName;
@property NSStatusItemBehavior behavior;
@property(getter=isVisible) BOOL visible;
@end

@interface NSStatusBar : NSObject
@property(class, readonly, strong) NSStatusBar* systemStatusBar;
- (NSStatusItem*)statusItemWithLength:(CGFloat)length;
- (void)removeStatusItem:(NSStatusItem*)item;
@end

@interface NSGraphicsContext : NSObject
@end

@interface NSImage : NSObject
+ (instancetype)imageWithSystemSymbolName:(NSString*)name accessibilityDescription:(NSString*)description;
- (CGImageRef)CGImageForProposedRect:(NSRect*)rect context:(NSGraphicsContext*)context hints:(NSDictionary*)hints;
@end

@interface NSMenuItem : NSObject
+ (NSMenuItem*)separatorItem;
- (instancetype)initWithTitle:(NSString*)title action:(SEL)action keyEquivalent:(NSString*)keyEquivalent;
@property(weak) id target;
@property(strong) id representedObject;
@property(getter=isEnabled) BOOL enabled;
@property(strong) NSMenu* submenu;
@end

@interface NSMenu : NSObject
- (instancetype)initWithTitle:(NSString*)title;
@property BOOL autoenablesItems;
- (void)addItem:(NSMenuItem*)item;
- (BOOL)popUpMenuPositioningItem:(NSMenuItem*)item atLocation:(NSPoint)location inView:(NSView*)view;
@end

typedef NS_OPTIONS(NSUInteger, NSWindowStyleMask) { NSWindowStyleMaskFullSizeContentView = 1UL << 15 };
typedef NS_ENUM(NSInteger, NSWindowTitleVisibility) { NSWindowTitleVisible = 0, NSWindowTitleHidden = 1 };

@interface NSWindow : NSResponder
@property NSWindowStyleMask styleMask;
@property NSWindowTitleVisibility titleVisibility;
@property BOOL titlebarAppearsTransparent;
@property(readonly, weak) NSResponder* firstResponder;
@property(readonly) NSRect frame;
@property(readonly) NSRect contentLayoutRect;
- (NSRect)contentRectForFrameRect:(NSRect)frame;
- (NSRect)frameRectForContentRect:(NSRect)content;
- (void)setFrame:(NSRect)frame display:(BOOL)display;
@end

@interface NSAppearance : NSObject
- (NSString*)bestMatchFromAppearancesWithNames:(NSArray*)names;
@end

@protocol NSApplicationDelegate <NSObject>
@optional
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
- (BOOL)applicationShouldHandleReopen:(NSApplication*)sender hasVisibleWindows:(BOOL)flag;
- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication*)sender;
- (void)applicationWillTerminate:(NSNotification*)notification;
@end

@interface NSApplication : NSResponder
@property(class, readonly, strong) NSApplication* sharedApplication;
@property(weak) id<NSApplicationDelegate> delegate;
@property(strong) NSMenu* mainMenu;
@property(readonly, strong) NSEvent* currentEvent;
@property(readonly, weak) NSWindow* keyWindow;
@property(readonly, strong) NSAppearance* effectiveAppearance;
- (void)run;
- (void)terminate:(id)sender;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
- (void)activateIgnoringOtherApps:(BOOL)flag;
@end

@interface NSRunningApplication : NSObject
@property(readonly, copy) NSString* bundleIdentifier;
@property(readonly, copy) NSString* localizedName;
@property(readonly, copy) NSURL* bundleURL;
@property(readonly) pid_t processIdentifier;
@property(readonly) NSApplicationActivationPolicy activationPolicy;
@property(readonly, strong) NSImage* icon;
+ (instancetype)runningApplicationWithProcessIdentifier:(pid_t)pid;
+ (NSArray*)runningApplicationsWithBundleIdentifier:(NSString*)identifier;
@end

@interface NSWorkspace : NSObject
@property(class, readonly, strong) NSWorkspace* sharedWorkspace;
@property(readonly, strong) NSNotificationCenter* notificationCenter;
@property(readonly, copy) NSArray* runningApplications;
@property(readonly) BOOL accessibilityDisplayShouldReduceMotion;
- (NSURL*)URLForApplicationWithBundleIdentifier:(NSString*)identifier;
- (BOOL)openURL:(NSURL*)url;
@end

@interface NSPasteboard : NSObject
@property(class, readonly, strong) NSPasteboard* generalPasteboard;
- (NSInteger)clearContents;
- (BOOL)setString:(NSString*)text forType:(NSString*)type;
@end

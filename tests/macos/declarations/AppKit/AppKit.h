// https://developer.apple.com/documentation/appkit
#pragma once

#import <Foundation/Foundation.h>
#include <sys/types.h>

@class NSButton;
@class NSColor;
@class NSFont;
@class NSImage;
@class NSMenu;
@class NSMenuItem;
@class NSView;
@class NSWindow;

// https://developer.apple.com/documentation/foundation/nsrect
typedef struct {
  CGFloat x, y;
} NSPoint;
typedef struct {
  CGFloat width, height;
} NSSize;
typedef struct {
  NSPoint origin;
  NSSize size;
} NSRect;
typedef struct {
  CGFloat top, left, bottom, right;
} NSEdgeInsets;
extern const NSRect NSZeroRect;
extern "C" NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat width, CGFloat height);
extern "C" NSEdgeInsets NSEdgeInsetsMake(CGFloat top, CGFloat left, CGFloat bottom, CGFloat right);

// https://developer.apple.com/documentation/appkit/nsrunningapplication
typedef NSInteger NSApplicationActivationPolicy;
extern const NSApplicationActivationPolicy NSApplicationActivationPolicyRegular;
extern const NSApplicationActivationPolicy NSApplicationActivationPolicyAccessory;
typedef NSUInteger NSApplicationActivationOptions;
extern const NSApplicationActivationOptions NSApplicationActivateIgnoringOtherApps TV_BETWEEN(10.6, 14.0);
@interface NSRunningApplication : NSObject
@property(class, readonly, strong) NSRunningApplication* currentApplication;
+ (instancetype)runningApplicationWithProcessIdentifier:(pid_t)pid;
+ (NSArray<NSRunningApplication*>*)runningApplicationsWithBundleIdentifier:(NSString*)identifier;
@property(readonly) pid_t processIdentifier;
@property(readonly, copy) NSString* localizedName;
@property(readonly, copy) NSURL* bundleURL;
@property(readonly) NSApplicationActivationPolicy activationPolicy;
@property(readonly, getter=isActive) BOOL active;
@property(readonly, getter=isTerminated) BOOL terminated;
- (BOOL)activateWithOptions:(NSApplicationActivationOptions)options;
- (BOOL)activateFromApplication:(NSRunningApplication*)application
                        options:(NSApplicationActivationOptions)options TV_SINCE(14.0);
@end

// https://developer.apple.com/documentation/appkit/nsapplicationdelegate
@class NSApplication;
@protocol NSApplicationDelegate <NSObject>
@optional
- (void)applicationDidFinishLaunching:(NSNotification*)notification;
- (BOOL)applicationShouldHandleReopen:(NSApplication*)sender hasVisibleWindows:(BOOL)hasVisibleWindows;
- (void)applicationWillTerminate:(NSNotification*)notification;
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)sender TV_SINCE(12.0);
@end

// https://developer.apple.com/documentation/appkit/nsresponder
@interface NSResponder : NSObject
@end

// https://developer.apple.com/documentation/appkit/nsapplication
@interface NSApplication : NSResponder
@property(class, readonly, strong) NSApplication* sharedApplication;
@property(weak) id<NSApplicationDelegate> delegate;
@property(strong) NSMenu* mainMenu;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
- (void)run;
- (void)terminate:(id)sender;
- (void)activate TV_SINCE(14.0);
- (void)activateIgnoringOtherApps:(BOOL)ignores TV_BETWEEN(10.0, 14.0);
- (void)yieldActivationToApplication:(NSRunningApplication*)application TV_SINCE(14.0);
@end
extern NSApplication* NSApp;

// https://developer.apple.com/documentation/appkit/nsworkspace/openconfiguration
@interface NSWorkspaceOpenConfiguration : NSObject
+ (instancetype)configuration;
@end

// https://developer.apple.com/documentation/appkit/nsworkspace
typedef void (^NSWorkspaceOpened)(NSRunningApplication* application, NSError* error);
@interface NSWorkspace : NSObject
@property(class, readonly, strong) NSWorkspace* sharedWorkspace;
@property(readonly, copy) NSArray<NSRunningApplication*>* runningApplications;
- (NSURL*)URLForApplicationWithBundleIdentifier:(NSString*)identifier;
- (NSArray<NSURL*>*)URLsForApplicationsWithBundleIdentifier:(NSString*)identifier TV_SINCE(12.0);
- (BOOL)openURL:(NSURL*)url;
- (void)openURL:(NSURL*)url
        configuration:(NSWorkspaceOpenConfiguration*)configuration
    completionHandler:(NSWorkspaceOpened)handler;
- (void)openURLs:(NSArray<NSURL*>*)urls
    withApplicationAtURL:(NSURL*)application
           configuration:(NSWorkspaceOpenConfiguration*)configuration
       completionHandler:(NSWorkspaceOpened)handler;
- (void)openApplicationAtURL:(NSURL*)url
               configuration:(NSWorkspaceOpenConfiguration*)configuration
           completionHandler:(NSWorkspaceOpened)handler;
- (NSImage*)iconForFile:(NSString*)path;
@end

// https://developer.apple.com/documentation/appkit/nscolor
@interface NSColor : NSObject
@property(class, readonly, strong) NSColor* labelColor;
@property(class, readonly, strong) NSColor* secondaryLabelColor;
@property(class, readonly, strong) NSColor* tertiaryLabelColor;
@property(class, readonly, strong) NSColor* controlAccentColor;
@property(class, readonly, strong) NSColor* controlBackgroundColor;
@property(class, readonly, strong) NSColor* separatorColor;
@property(class, readonly, strong) NSColor* systemGreenColor;
@property(class, readonly, strong) NSColor* systemOrangeColor;
@end

// https://developer.apple.com/documentation/appkit/nsfont
typedef CGFloat NSFontWeight;
extern const NSFontWeight NSFontWeightRegular;
extern const NSFontWeight NSFontWeightMedium;
extern const NSFontWeight NSFontWeightSemibold;
typedef NSString* NSFontTextStyle;
extern const NSFontTextStyle NSFontTextStyleTitle1 TV_SINCE(11.0);
extern const NSFontTextStyle NSFontTextStyleBody TV_SINCE(11.0);
extern const NSFontTextStyle NSFontTextStyleCallout TV_SINCE(11.0);
extern const NSFontTextStyle NSFontTextStyleCaption1 TV_SINCE(11.0);
@interface NSFont : NSObject
+ (NSFont*)systemFontOfSize:(CGFloat)size weight:(NSFontWeight)weight;
+ (NSFont*)monospacedDigitSystemFontOfSize:(CGFloat)size weight:(NSFontWeight)weight;
+ (NSFont*)preferredFontForTextStyle:(NSFontTextStyle)style
                             options:(NSDictionary<NSString*, id>*)options TV_SINCE(11.0);
@property(readonly) CGFloat pointSize;
@end

// https://developer.apple.com/documentation/foundation/nsattributedstring
typedef NSString* NSAttributedStringKey;
extern const NSAttributedStringKey NSFontAttributeName;
extern const NSAttributedStringKey NSForegroundColorAttributeName;
extern const NSAttributedStringKey NSParagraphStyleAttributeName;
@interface NSAttributedString : NSObject
- (instancetype)initWithString:(NSString*)string attributes:(NSDictionary<NSAttributedStringKey, id>*)attributes;
@end

// https://developer.apple.com/documentation/foundation/nsmutableattributedstring
@interface NSMutableAttributedString : NSAttributedString
- (void)appendAttributedString:(NSAttributedString*)other;
@end

// https://developer.apple.com/documentation/foundation/nsstring/sizewithattributes:
@interface NSString (NSStringDrawing)
- (NSSize)sizeWithAttributes:(NSDictionary<NSAttributedStringKey, id>*)attributes;
@end

// https://developer.apple.com/documentation/uikit/nstexttab
typedef NSInteger NSTextAlignment;
extern const NSTextAlignment NSTextAlignmentCenter;
extern const NSTextAlignment NSTextAlignmentNatural;
@interface NSTextTab : NSObject
- (instancetype)initWithTextAlignment:(NSTextAlignment)alignment
                             location:(CGFloat)location
                              options:(NSDictionary<NSString*, id>*)options;
@end

// https://developer.apple.com/documentation/uikit/nsmutableparagraphstyle
@interface NSParagraphStyle : NSObject
@end
@interface NSMutableParagraphStyle : NSParagraphStyle
@property(copy) NSArray<NSTextTab*>* tabStops;
@end

// https://developer.apple.com/documentation/appkit/nsimage/symbolconfiguration
@interface NSImageSymbolConfiguration : NSObject
+ (instancetype)configurationWithPointSize:(CGFloat)size weight:(NSFontWeight)weight TV_SINCE(11.0);
@end

// https://developer.apple.com/documentation/appkit/nsimage
@interface NSImage : NSObject
+ (instancetype)imageWithSystemSymbolName:(NSString*)name
                 accessibilityDescription:(NSString*)description TV_SINCE(11.0);
- (NSImage*)imageWithSymbolConfiguration:(NSImageSymbolConfiguration*)configuration TV_SINCE(11.0);
- (void)setTemplate:(BOOL)isTemplate;
@end

// https://developer.apple.com/documentation/appkit/nslayoutconstraint
typedef NSInteger NSLayoutAttribute;
extern const NSLayoutAttribute NSLayoutAttributeTop;
extern const NSLayoutAttribute NSLayoutAttributeLeading;
extern const NSLayoutAttribute NSLayoutAttributeCenterY;
typedef float NSLayoutPriority;
extern const NSLayoutPriority NSLayoutPriorityDefaultLow;
typedef NSInteger NSLayoutConstraintOrientation;
extern const NSLayoutConstraintOrientation NSLayoutConstraintOrientationHorizontal;
@interface NSLayoutConstraint : NSObject
@property(getter=isActive) BOOL active;
@end

// https://developer.apple.com/documentation/appkit/nslayoutanchor
@interface NSLayoutAnchor : NSObject
- (NSLayoutConstraint*)constraintEqualToAnchor:(NSLayoutAnchor*)anchor;
@end
@interface NSLayoutXAxisAnchor : NSLayoutAnchor
@end
@interface NSLayoutYAxisAnchor : NSLayoutAnchor
@end

// https://developer.apple.com/documentation/appkit/nslayoutdimension
@interface NSLayoutDimension : NSLayoutAnchor
- (NSLayoutConstraint*)constraintEqualToAnchor:(NSLayoutDimension*)anchor constant:(CGFloat)constant;
- (NSLayoutConstraint*)constraintEqualToConstant:(CGFloat)constant;
@end

// https://developer.apple.com/documentation/appkit/nsaccessibility/role
extern NSString* const NSAccessibilityGroupRole;

// https://developer.apple.com/documentation/appkit/nsview
@interface NSView : NSResponder
- (instancetype)initWithFrame:(NSRect)frame;
@property(readonly, getter=isFlipped) BOOL flipped;
@property NSRect bounds;
@property CGFloat alphaValue;
@property BOOL translatesAutoresizingMaskIntoConstraints;
@property(readonly, strong) NSLayoutDimension* widthAnchor;
@property(readonly, strong) NSLayoutDimension* heightAnchor;
@property(readonly, strong) NSLayoutXAxisAnchor* leadingAnchor;
@property(readonly, strong) NSLayoutXAxisAnchor* trailingAnchor;
@property(readonly, strong) NSLayoutYAxisAnchor* topAnchor;
@property(readonly, strong) NSLayoutYAxisAnchor* bottomAnchor;
@property(getter=isAccessibilityElement) BOOL accessibilityElement;
@property(copy) NSString* accessibilityRole;
@property(copy) NSString* accessibilityLabel;
@property(copy) NSString* toolTip;
@property(copy) NSString* identifier;
- (void)addSubview:(NSView*)view;
- (void)layoutSubtreeIfNeeded;
- (void)scrollPoint:(NSPoint)point;
- (void)setContentHuggingPriority:(NSLayoutPriority)priority forOrientation:(NSLayoutConstraintOrientation)orientation;
- (void)setContentCompressionResistancePriority:(NSLayoutPriority)priority
                                 forOrientation:(NSLayoutConstraintOrientation)orientation;
@end

// https://developer.apple.com/documentation/appkit/nsstackview
typedef NSInteger NSUserInterfaceLayoutOrientation;
extern const NSUserInterfaceLayoutOrientation NSUserInterfaceLayoutOrientationHorizontal;
extern const NSUserInterfaceLayoutOrientation NSUserInterfaceLayoutOrientationVertical;
typedef NSInteger NSStackViewDistribution;
extern const NSStackViewDistribution NSStackViewDistributionFill;
extern const NSStackViewDistribution NSStackViewDistributionGravityAreas;
typedef NSInteger NSStackViewGravity;
extern const NSStackViewGravity NSStackViewGravityLeading;
@interface NSStackView : NSView
@property NSStackViewDistribution distribution;
- (void)addView:(NSView*)view inGravity:(NSStackViewGravity)gravity;
@property NSUserInterfaceLayoutOrientation orientation;
@property NSLayoutAttribute alignment;
@property CGFloat spacing;
@property NSEdgeInsets edgeInsets;
- (void)addArrangedSubview:(NSView*)view;
@end

// https://developer.apple.com/documentation/appkit/nsbox
typedef NSUInteger NSBoxType;
extern const NSBoxType NSBoxCustom;
typedef NSUInteger NSTitlePosition;
extern const NSTitlePosition NSNoTitle;
@interface NSBox : NSView
@property NSBoxType boxType;
@property NSTitlePosition titlePosition;
@property CGFloat cornerRadius;
@property CGFloat borderWidth;
@property(copy) NSColor* borderColor;
@property(copy) NSColor* fillColor;
@end

// https://developer.apple.com/documentation/appkit/nsclipview
@interface NSClipView : NSView
@end

// https://developer.apple.com/documentation/appkit/nsscrollview
@interface NSScrollView : NSView
@property BOOL hasVerticalScroller;
@property BOOL drawsBackground;
@property(strong) NSView* documentView;
@property(strong) NSClipView* contentView;
@end

// https://developer.apple.com/documentation/appkit/nscontrol
typedef NSInteger NSControlStateValue;
extern const NSControlStateValue NSControlStateValueOn;
extern const NSControlStateValue NSControlStateValueOff;
@interface NSControl : NSView
@property(weak) id target;
@property SEL action;
@property(getter=isEnabled) BOOL enabled;
@property NSInteger integerValue;
@property(copy) NSString* stringValue;
@property NSTextAlignment alignment;
@property(strong) NSFont* font;
@end

// https://developer.apple.com/documentation/appkit/nstextfield
@interface NSTextField : NSControl
+ (instancetype)labelWithString:(NSString*)string;
+ (instancetype)wrappingLabelWithString:(NSString*)string;
@property(copy) NSColor* textColor;
@property CGFloat preferredMaxLayoutWidth;
@property(getter=isSelectable) BOOL selectable;
@end

// https://developer.apple.com/documentation/appkit/nsimageview
@interface NSImageView : NSControl
@property(strong) NSImage* image;
@property(copy) NSColor* contentTintColor;
@end

// https://developer.apple.com/documentation/appkit/nsbutton
@interface NSButton : NSControl
+ (instancetype)buttonWithTitle:(NSString*)title target:(id)target action:(SEL)action;
+ (instancetype)checkboxWithTitle:(NSString*)title target:(id)target action:(SEL)action;
@property(copy) NSString* title;
@property(copy) NSString* keyEquivalent;
@property NSControlStateValue state;
@property(strong) NSImage* image;
@end

// https://developer.apple.com/documentation/appkit/nsswitch
@interface NSSwitch : NSControl
@property NSControlStateValue state;
@end

// https://developer.apple.com/documentation/appkit/nsscreen
@interface NSScreen : NSObject
@property(class, readonly, strong) NSScreen* mainScreen;
@property(readonly) NSRect visibleFrame;
@end

// https://developer.apple.com/documentation/appkit/nswindow
typedef NSUInteger NSWindowStyleMask;
extern const NSWindowStyleMask NSWindowStyleMaskTitled;
extern const NSWindowStyleMask NSWindowStyleMaskClosable;
typedef NSUInteger NSBackingStoreType;
extern const NSBackingStoreType NSBackingStoreBuffered;
@interface NSWindow : NSResponder
- (instancetype)initWithContentRect:(NSRect)rect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)flag;
@property(copy) NSString* title;
@property(getter=isReleasedWhenClosed) BOOL releasedWhenClosed;
@property BOOL autorecalculatesKeyViewLoop;
@property(strong) NSView* contentView;
@property(readonly, weak) NSResponder* firstResponder;
- (BOOL)makeFirstResponder:(NSResponder*)responder;
- (void)center;
- (void)makeKeyAndOrderFront:(id)sender;
- (void)orderFrontRegardless;
- (void)performClose:(id)sender;
@end

// https://developer.apple.com/documentation/appkit/nstext
@interface NSText : NSView
- (void)copy:(id)sender;
- (void)selectAll:(id)sender;
@end

// https://developer.apple.com/documentation/appkit/nsalert
typedef NSInteger NSModalResponse;
extern const NSModalResponse NSAlertFirstButtonReturn;
@interface NSAlert : NSObject
@property(copy) NSString* messageText;
@property(copy) NSString* informativeText;
@property(readonly, strong) NSWindow* window;
- (NSButton*)addButtonWithTitle:(NSString*)title;
- (void)layout;
- (NSModalResponse)runModal;
@end

// https://developer.apple.com/documentation/appkit/nsmenuitem
@interface NSMenuItem : NSObject
+ (NSMenuItem*)separatorItem;
- (instancetype)initWithTitle:(NSString*)title action:(SEL)action keyEquivalent:(NSString*)key;
@property(weak) id target;
@property(getter=isEnabled) BOOL enabled;
@property(copy) NSAttributedString* attributedTitle;
@property(copy) NSString* toolTip;
@property(strong) id representedObject;
@property(strong) NSMenu* submenu;
@end

// https://developer.apple.com/documentation/appkit/nsmenudelegate
@protocol NSMenuDelegate <NSObject>
@optional
- (void)menuNeedsUpdate:(NSMenu*)menu;
@end

// https://developer.apple.com/documentation/appkit/nsmenu
@interface NSMenu : NSObject
- (instancetype)initWithTitle:(NSString*)title;
@property BOOL autoenablesItems;
@property(weak) id<NSMenuDelegate> delegate;
- (void)addItem:(NSMenuItem*)item;
- (NSMenuItem*)addItemWithTitle:(NSString*)title action:(SEL)action keyEquivalent:(NSString*)key;
- (void)removeAllItems;
@end

// https://developer.apple.com/documentation/appkit/nsstatusitem
@interface NSStatusBarButton : NSButton
@end
@interface NSStatusItem : NSObject
@property(copy) NSString* autosaveName;
@property(readonly, strong) NSStatusBarButton* button;
@property(strong) NSMenu* menu;
@end

// https://developer.apple.com/documentation/appkit/nsstatusbar
extern const CGFloat NSVariableStatusItemLength;
@interface NSStatusBar : NSObject
@property(class, readonly, strong) NSStatusBar* systemStatusBar;
- (NSStatusItem*)statusItemWithLength:(CGFloat)length;
- (void)removeStatusItem:(NSStatusItem*)item;
@end

// https://developer.apple.com/documentation/safariservices
#pragma once

#import <Foundation/Foundation.h>

// https://developer.apple.com/documentation/safariservices/sfextensionmessagekey
extern NSString* const SFExtensionMessageKey TV_SINCE(11.0);

// https://developer.apple.com/documentation/safariservices/sfsafariextensionstate
@interface SFSafariExtensionState : NSObject
@property(readonly, getter=isEnabled) BOOL enabled;
@end

// https://developer.apple.com/documentation/safariservices/sfsafariextensionmanager
@interface SFSafariExtensionManager : NSObject
+ (void)getStateOfSafariExtensionWithIdentifier:(NSString*)identifier
                              completionHandler:(void (^)(SFSafariExtensionState* state, NSError* error))handler;
@end

// https://developer.apple.com/documentation/safariservices/sfsafariapplication
@interface SFSafariApplication : NSObject
+ (void)dispatchMessageWithName:(NSString*)name
      toExtensionWithIdentifier:(NSString*)identifier
                       userInfo:(NSDictionary<NSString*, id>*)userInfo
              completionHandler:(void (^)(NSError* error))handler;
+ (void)showPreferencesForExtensionWithIdentifier:(NSString*)identifier
                                completionHandler:(void (^)(NSError* error))handler;
@end

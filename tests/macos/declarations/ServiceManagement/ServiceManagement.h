// https://developer.apple.com/documentation/servicemanagement
#pragma once

#import <Foundation/Foundation.h>

// https://developer.apple.com/documentation/servicemanagement/smappservice/status-swift.enum
typedef NSInteger SMAppServiceStatus TV_SINCE(13.0);

// https://developer.apple.com/documentation/servicemanagement/smappservice
TV_SINCE(13.0)
@interface SMAppService : NSObject
@property(class, readonly) SMAppService* mainAppService;
@property(readonly) SMAppServiceStatus status;
- (BOOL)registerAndReturnError:(NSError**)error;
- (BOOL)unregisterAndReturnError:(NSError**)error;
+ (void)openSystemSettingsLoginItems;
@end

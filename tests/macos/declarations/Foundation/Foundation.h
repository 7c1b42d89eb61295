// https://developer.apple.com/documentation/foundation
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <dispatch/dispatch.h>

#define TV_SINCE(version) __attribute__((availability(macos, introduced = version)))
#define TV_BETWEEN(first, last) __attribute__((availability(macos, introduced = first, deprecated = last)))

// https://developer.apple.com/documentation/objectivec/bool
#if __OBJC_BOOL_IS_BOOL
typedef bool BOOL;
#else
typedef signed char BOOL;
#endif
#define YES __objc_yes
#define NO __objc_no
#define nil nullptr

// https://developer.apple.com/documentation/objectivec/nsinteger
typedef long NSInteger;
typedef unsigned long NSUInteger;
typedef double NSTimeInterval;
typedef double CGFloat;

@class NSString;
@class NSArray<__covariant ObjectType>;
@class NSDictionary<__covariant KeyType, __covariant ObjectType>;
@class NSData;
@class NSDate;
@class NSError;
@class NSURL;
@class NSNotification;
@class NSOperationQueue;

// https://developer.apple.com/documentation/objectivec/1418956-nsobject
@protocol NSObject
- (Class)class;
- (BOOL)isKindOfClass:(Class)aClass;
@end

// https://developer.apple.com/documentation/objectivec/nsobject
__attribute__((objc_root_class))
@interface NSObject<NSObject>
+ (instancetype)alloc;
+ (Class)class;
- (instancetype)init;
@end

// https://developer.apple.com/documentation/foundation/nsfastenumeration
typedef struct {
  unsigned long state;
  id __unsafe_unretained* itemsPtr;
  unsigned long* mutationsPtr;
  unsigned long extra[5];
} NSFastEnumerationState;
@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained[])buffer
                                    count:(NSUInteger)length;
@end

@protocol NSCopying
@end

// https://developer.apple.com/documentation/foundation/nsstring
typedef NSUInteger NSStringEncoding;
extern const NSStringEncoding NSUTF8StringEncoding;
extern const NSStringEncoding NSISOLatin1StringEncoding;
@interface NSString : NSObject <NSCopying>
- (instancetype)initWithBytes:(const void*)bytes length:(NSUInteger)length encoding:(NSStringEncoding)encoding;
- (BOOL)isEqualToString:(NSString*)other;
@property(readonly) NSUInteger length;
@property(readonly) const char* UTF8String;
@property(readonly, copy) NSString* lowercaseString;
@end

// https://developer.apple.com/documentation/foundation/nsarray
@interface NSArray<__covariant ObjectType> : NSObject <NSFastEnumeration>
+ (instancetype)arrayWithObjects:(const ObjectType[])objects count:(NSUInteger)count;
@property(readonly) ObjectType firstObject;
@end

// https://developer.apple.com/documentation/foundation/nsmutablearray
@interface NSMutableArray<ObjectType> : NSArray <ObjectType>
+ (instancetype)array;
- (void)addObject:(ObjectType)object;
@end

// https://developer.apple.com/documentation/foundation/nsdictionary
@interface NSDictionary<__covariant KeyType, __covariant ObjectType> : NSObject
+ (instancetype)dictionaryWithObjects:(const ObjectType[])objects
                              forKeys:(const KeyType<NSCopying>[])keys
                                count:(NSUInteger)count;
- (ObjectType)objectForKeyedSubscript:(KeyType)key;
@end

// https://developer.apple.com/documentation/foundation/nsmutabledictionary
@interface NSMutableDictionary<KeyType, ObjectType> : NSDictionary <KeyType, ObjectType>
+ (instancetype)dictionary;
- (void)setObject:(ObjectType)object forKeyedSubscript:(KeyType<NSCopying>)key;
@end

// https://developer.apple.com/documentation/foundation/nsnumber
@interface NSNumber : NSObject
+ (NSNumber*)numberWithBool:(BOOL)value;
@property(readonly) BOOL boolValue;
@property(readonly) double doubleValue;
@end

// https://developer.apple.com/documentation/foundation/nsdata
@interface NSData : NSObject
+ (instancetype)dataWithBytes:(const void*)bytes length:(NSUInteger)length;
@property(readonly) const void* bytes;
@property(readonly) NSUInteger length;
@end

// https://developer.apple.com/documentation/foundation/nsexception
@interface NSException : NSObject
@end

// https://developer.apple.com/documentation/foundation/nserror
@interface NSError : NSObject
@property(readonly, copy) NSString* localizedDescription;
@end

// https://developer.apple.com/documentation/foundation/nsurl
@interface NSURL : NSObject
+ (NSURL*)fileURLWithPath:(NSString*)path;
+ (instancetype)URLWithString:(NSString*)text;
@property(readonly) const char* fileSystemRepresentation;
@property(readonly, copy) NSString* scheme;
@property(readonly, copy) NSString* host;
@end

// https://developer.apple.com/documentation/foundation/nsdate
@interface NSDate : NSObject
+ (instancetype)dateWithTimeIntervalSince1970:(NSTimeInterval)seconds;
+ (instancetype)dateWithTimeIntervalSinceNow:(NSTimeInterval)seconds;
@end

// https://developer.apple.com/documentation/foundation/nsrunloop
typedef NSString* NSRunLoopMode;
extern const NSRunLoopMode NSDefaultRunLoopMode;
@interface NSRunLoop : NSObject
@property(class, readonly, strong) NSRunLoop* currentRunLoop;
- (BOOL)runMode:(NSRunLoopMode)mode beforeDate:(NSDate*)limit;
@end

// https://developer.apple.com/documentation/foundation/nsdateformatter
@interface NSDateFormatter : NSObject
- (NSString*)stringFromDate:(NSDate*)date;
@property(copy) NSString* dateFormat;
@end

// https://developer.apple.com/documentation/foundation/nsoperationqueue
@interface NSOperationQueue : NSObject
@property(class, readonly, strong) NSOperationQueue* mainQueue;
@end

// https://developer.apple.com/documentation/foundation/nsuserdefaults
@interface NSUserDefaults : NSObject
@property(class, readonly, strong) NSUserDefaults* standardUserDefaults;
- (id)objectForKey:(NSString*)key;
- (void)setBool:(BOOL)value forKey:(NSString*)key;
- (void)setDouble:(double)value forKey:(NSString*)key;
- (BOOL)synchronize;
- (void)removePersistentDomainForName:(NSString*)name;
@end

// https://developer.apple.com/documentation/foundation/nssearchpathdirectory
typedef NSUInteger NSSearchPathDirectory;
extern const NSSearchPathDirectory NSApplicationSupportDirectory;
typedef NSUInteger NSSearchPathDomainMask;
extern const NSSearchPathDomainMask NSUserDomainMask;

// https://developer.apple.com/documentation/foundation/nshomedirectory()
extern "C" NSString* NSHomeDirectory(void);

// https://developer.apple.com/documentation/foundation/nsfilemanager
@interface NSFileManager : NSObject
@property(class, readonly, strong) NSFileManager* defaultManager;
- (NSArray<NSURL*>*)URLsForDirectory:(NSSearchPathDirectory)directory inDomains:(NSSearchPathDomainMask)domains;
- (NSString*)displayNameAtPath:(NSString*)path;
@end

// https://developer.apple.com/documentation/foundation/nsbundle
@interface NSBundle : NSObject
@property(class, readonly, strong) NSBundle* mainBundle;
@property(readonly, copy) NSString* bundlePath;
@property(readonly, copy) NSDictionary<NSString*, id>* infoDictionary;
- (NSURL*)URLForAuxiliaryExecutable:(NSString*)name;
- (NSURL*)URLForResource:(NSString*)name withExtension:(NSString*)ending;
@end

// https://developer.apple.com/documentation/foundation/nsfilehandle
@interface NSFileHandle : NSObject
@property(class, readonly, strong) NSFileHandle* fileHandleWithNullDevice;
@property(readonly) int fileDescriptor;
@end

// https://developer.apple.com/documentation/foundation/nspipe
@interface NSPipe : NSObject
+ (NSPipe*)pipe;
@property(readonly, strong) NSFileHandle* fileHandleForReading;
@end

// https://developer.apple.com/documentation/foundation/nstask
typedef NSInteger NSTaskTerminationReason;
extern const NSTaskTerminationReason NSTaskTerminationReasonExit;
@interface NSTask : NSObject
@property(copy) NSURL* executableURL;
@property(copy) NSArray<NSString*>* arguments;
@property(strong) id standardOutput;
@property(strong) id standardError;
@property(copy) void (^terminationHandler)(NSTask* task);
@property(readonly) NSTaskTerminationReason terminationReason;
@property(readonly) int terminationStatus;
- (BOOL)launchAndReturnError:(NSError**)error;
- (void)terminate;
@end

// https://developer.apple.com/documentation/foundation/nsprocessinfo
typedef unsigned long long NSActivityOptions;
extern const NSActivityOptions NSActivityUserInitiatedAllowingIdleSystemSleep;
@interface NSProcessInfo : NSObject
@property(class, readonly, strong) NSProcessInfo* processInfo;
@property(readonly, copy) NSString* processName;
- (id<NSObject>)beginActivityWithOptions:(NSActivityOptions)options reason:(NSString*)reason;
@end

// https://developer.apple.com/documentation/foundation/nsjsonserialization
@interface NSJSONSerialization : NSObject
+ (BOOL)isValidJSONObject:(id)object;
+ (NSData*)dataWithJSONObject:(id)object options:(NSUInteger)options error:(NSError**)error;
+ (id)JSONObjectWithData:(NSData*)data options:(NSUInteger)options error:(NSError**)error;
@end

// https://developer.apple.com/documentation/foundation/nspropertylistserialization
typedef NSUInteger NSPropertyListFormat;
extern const NSPropertyListFormat NSPropertyListBinaryFormat_v1_0;
@interface NSPropertyListSerialization : NSObject
+ (BOOL)propertyList:(id)list isValidForFormat:(NSPropertyListFormat)format;
@end

// https://developer.apple.com/documentation/foundation/nsurlrequest
typedef NSUInteger NSURLRequestCachePolicy;
extern const NSURLRequestCachePolicy NSURLRequestReloadIgnoringLocalCacheData;
@interface NSURLRequest : NSObject
@property(readonly, copy) NSURL* URL;
@end

// https://developer.apple.com/documentation/foundation/nsmutableurlrequest
@interface NSMutableURLRequest : NSURLRequest
+ (instancetype)requestWithURL:(NSURL*)url;
@property NSURLRequestCachePolicy cachePolicy;
- (void)setValue:(NSString*)value forHTTPHeaderField:(NSString*)field;
@end

// https://developer.apple.com/documentation/foundation/nsurlresponse
@interface NSURLResponse : NSObject
@property(readonly) long long expectedContentLength;
@end

// https://developer.apple.com/documentation/foundation/nshttpurlresponse
@interface NSHTTPURLResponse : NSURLResponse
@property(readonly) NSInteger statusCode;
@end

// https://developer.apple.com/documentation/foundation/nsurlsessionconfiguration
@interface NSURLSessionConfiguration : NSObject
@property(class, readonly, strong) NSURLSessionConfiguration* ephemeralSessionConfiguration;
@property NSTimeInterval timeoutIntervalForResource;
@end

// https://developer.apple.com/documentation/foundation/nsurlsessiontask
@interface NSURLSessionTask : NSObject
- (void)cancel;
- (void)resume;
@end
@interface NSURLSessionDataTask : NSURLSessionTask
@end

// https://developer.apple.com/documentation/foundation/nsurlsession
@protocol NSURLSessionDataDelegate;
@interface NSURLSession : NSObject
+ (NSURLSession*)sessionWithConfiguration:(NSURLSessionConfiguration*)configuration
                                 delegate:(id<NSURLSessionDataDelegate>)delegate
                            delegateQueue:(NSOperationQueue*)queue;
- (NSURLSessionDataTask*)dataTaskWithRequest:(NSURLRequest*)request;
- (void)finishTasksAndInvalidate;
@end

// https://developer.apple.com/documentation/foundation/nsurlsessiondatadelegate
typedef NSInteger NSURLSessionResponseDisposition;
extern const NSURLSessionResponseDisposition NSURLSessionResponseAllow;
extern const NSURLSessionResponseDisposition NSURLSessionResponseCancel;
@protocol NSURLSessionDataDelegate <NSObject>
@optional
- (void)URLSession:(NSURLSession*)session
              dataTask:(NSURLSessionDataTask*)task
    didReceiveResponse:(NSURLResponse*)response
     completionHandler:(void (^)(NSURLSessionResponseDisposition))handler;
- (void)URLSession:(NSURLSession*)session dataTask:(NSURLSessionDataTask*)task didReceiveData:(NSData*)data;
- (void)URLSession:(NSURLSession*)session
                          task:(NSURLSessionTask*)task
    willPerformHTTPRedirection:(NSHTTPURLResponse*)response
                    newRequest:(NSURLRequest*)request
             completionHandler:(void (^)(NSURLRequest*))handler;
- (void)URLSession:(NSURLSession*)session task:(NSURLSessionTask*)task didCompleteWithError:(NSError*)error;
@end

// https://developer.apple.com/documentation/foundation/nsextensionitem
@interface NSExtensionItem : NSObject
@property(copy) NSDictionary<NSString*, id>* userInfo;
@end

// https://developer.apple.com/documentation/foundation/nsextensioncontext
@interface NSExtensionContext : NSObject
@property(readonly, copy) NSArray<NSExtensionItem*>* inputItems;
- (void)completeRequestReturningItems:(NSArray<NSExtensionItem*>*)items
                    completionHandler:(void (^)(BOOL expired))handler;
@end

// https://developer.apple.com/documentation/foundation/nsextensionrequesthandling
@protocol NSExtensionRequestHandling <NSObject>
- (void)beginRequestWithExtensionContext:(NSExtensionContext*)context;
@end

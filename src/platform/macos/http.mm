#import <Foundation/Foundation.h>

#include <utility>

#include "platform/macos/decisions/web_address.h"
#include "platform/macos/objective_c.h"
#include "platform/macos/roles.h"

namespace tollvane {
namespace {

using Completion = std::function<void(std::optional<HttpResponse>)>;

bool isAllowed(NSURL* url) { return mayAsk(utf8(url.scheme.lowercaseString), utf8(url.host.lowercaseString)); }

}  // namespace
}  // namespace tollvane

using namespace tollvane;

// One request. Its session holds it until the request has ended. All on the main thread.
@interface TVRequest : NSObject <NSURLSessionDataDelegate>
- (instancetype)initWithCompletion:(Completion)completion;
@end

@implementation TVRequest {
  Completion _completion;
  NSMutableData* _body;
  NSInteger _status;
}

- (instancetype)initWithCompletion:(Completion)completion {
  self = [super init];
  if (self != nil) {
    _completion = std::move(completion);
    _body = [NSMutableData data];
  }
  return self;
}

- (void)URLSession:(NSURLSession*)session
              dataTask:(NSURLSessionDataTask*)task
    didReceiveResponse:(NSURLResponse*)response
     completionHandler:(void (^)(NSURLSessionResponseDisposition))proceed {
  const bool isHTTP = [response isKindOfClass:[NSHTTPURLResponse class]];
  _status = isHTTP ? ((NSHTTPURLResponse*)response).statusCode : 0;
  const bool fits = response.expectedContentLength <= static_cast<long long>(Http::maxBody);  // -1: unknown
  proceed(isHTTP && fits ? NSURLSessionResponseAllow : NSURLSessionResponseCancel);
}

// More may come after the task was cancelled, because it had arrived before.
- (void)URLSession:(NSURLSession*)session dataTask:(NSURLSessionDataTask*)task didReceiveData:(NSData*)data {
  if (_body.length <= Http::maxBody) [_body appendData:data];
  if (_body.length > Http::maxBody) [task cancel];
}

- (void)URLSession:(NSURLSession*)session
                          task:(NSURLSessionTask*)task
    willPerformHTTPRedirection:(NSHTTPURLResponse*)response
                    newRequest:(NSURLRequest*)request
             completionHandler:(void (^)(NSURLRequest*))proceed {
  proceed(isAllowed(request.URL) ? request : nil);
}

- (void)URLSession:(NSURLSession*)session task:(NSURLSessionTask*)task didCompleteWithError:(NSError*)error {
  const auto completion = std::exchange(_completion, nullptr);
  if (!completion) return;
  const bool isWhole = error == nil && _body.length <= Http::maxBody;
  if (!isWhole || !isAnswer(_status)) return completion(std::nullopt);
  completion(HttpResponse{static_cast<int>(_status), {static_cast<const char*>(_body.bytes), _body.length}});
}

@end

namespace tollvane {
namespace {

class SessionHttp : public Http {
 public:
  void get(const HttpRequest& request, Completion completion) override {
    NSURL* url = [NSURL URLWithString:nsString(request.url)];
    if (url == nil || !isAllowed(url)) return onMainQueue([completion] { completion(std::nullopt); });
    NSURLSessionConfiguration* configuration = [NSURLSessionConfiguration ephemeralSessionConfiguration];
    // The timeout of a request begins anew with each piece of the answer; that of the resource does not.
    configuration.timeoutIntervalForResource = std::chrono::duration<double>(request.timeout).count();
    configuration.HTTPShouldSetCookies = NO;
    NSURLSession* session = [NSURLSession sessionWithConfiguration:configuration
                                                          delegate:[[TVRequest alloc] initWithCompletion:completion]
                                                     delegateQueue:NSOperationQueue.mainQueue];
    NSMutableURLRequest* question = [NSMutableURLRequest requestWithURL:url];
    question.cachePolicy = NSURLRequestReloadIgnoringLocalCacheData;
    for (const auto& [name, value] : request.headers)
      [question setValue:nsString(value) forHTTPHeaderField:nsString(name)];
    [[session dataTaskWithRequest:question] resume];
    [session finishTasksAndInvalidate];
  }
};

}  // namespace

std::unique_ptr<Http> makeHttp() { return std::make_unique<SessionHttp>(); }

}  // namespace tollvane

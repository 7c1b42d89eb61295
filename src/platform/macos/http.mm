#import <Foundation/Foundation.h>

#include <string>
#include <utility>

#include "platform/macos/objective_c.h"
#include "platform/macos/roles.h"
#include "support/web_address.h"

using namespace tollvane;

// One request. Its session holds it until the request has ended. All on the main thread.
@interface TVRequest : NSObject <NSURLSessionDataDelegate> {
 @public
  std::function<void(std::optional<HttpResponse>)> completion;
}
+ (BOOL)mayAsk:(NSURL*)url;
@end

@implementation TVRequest {
  std::string _body;
  NSInteger _status;
}

+ (BOOL)mayAsk:(NSURL*)url {
  return web::mayAsk(utf8(url.scheme.lowercaseString), utf8(url.host.lowercaseString));
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
  if (_body.size() <= Http::maxBody) _body.append(static_cast<const char*>(data.bytes), data.length);
  if (_body.size() > Http::maxBody) [task cancel];
}

- (void)URLSession:(NSURLSession*)session
                          task:(NSURLSessionTask*)task
    willPerformHTTPRedirection:(NSHTTPURLResponse*)response
                    newRequest:(NSURLRequest*)request
             completionHandler:(void (^)(NSURLRequest*))proceed {
  proceed([TVRequest mayAsk:request.URL] ? request : nil);
}

- (void)URLSession:(NSURLSession*)session task:(NSURLSessionTask*)task didCompleteWithError:(NSError*)error {
  const bool isWhole = error == nil && _body.size() <= Http::maxBody;
  if (!isWhole || !web::isAnswer(_status)) return completion(std::nullopt);
  completion(HttpResponse{static_cast<int>(_status), _body});
}

@end

namespace tollvane {
namespace {

class SessionHttp : public Http {
 public:
  void get(const HttpRequest& request, std::function<void(std::optional<HttpResponse>)> completion) override {
    NSURL* url = [NSURL URLWithString:nsString(request.url)];
    if (url == nil || ![TVRequest mayAsk:url]) return onMainQueue([completion] { completion(std::nullopt); });
    NSURLSessionConfiguration* configuration = [NSURLSessionConfiguration ephemeralSessionConfiguration];
    // The timeout of a request begins anew with each piece of the answer; that of the resource does not.
    configuration.timeoutIntervalForResource = std::chrono::duration<double>(request.timeout).count();
    TVRequest* delegate = [[TVRequest alloc] init];
    delegate->completion = std::move(completion);
    NSURLSession* session = [NSURLSession sessionWithConfiguration:configuration
                                                          delegate:delegate
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

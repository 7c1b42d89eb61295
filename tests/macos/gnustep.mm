#include "tests/macos/gnustep.h"

@implementation NSURL (Tollvane)

- (const char*)fileSystemRepresentation {
  return self.path.fileSystemRepresentation;
}

@end

static const char handlerKey = 0;

@implementation NSTask (Tollvane)

@dynamic executableURL;

- (void)setExecutableURL:(NSURL*)url {
  self.launchPath = url.path;
}

- (void (^)(NSTask*))terminationHandler {
  return objc_getAssociatedObject(self, &handlerKey);
}

- (void)setTerminationHandler:(void (^)(NSTask*))handler {
  objc_setAssociatedObject(self, &handlerKey, handler, OBJC_ASSOCIATION_COPY_NONATOMIC);
  [NSNotificationCenter.defaultCenter removeObserver:self];
  if (handler != nil)
    [NSNotificationCenter.defaultCenter addObserver:self
                                           selector:@selector(tellEnd:)
                                               name:NSTaskDidTerminateNotification
                                             object:self];
}

- (void)tellEnd:(NSNotification*)notification {
  if (self.terminationHandler != nil) self.terminationHandler(self);
}

@end

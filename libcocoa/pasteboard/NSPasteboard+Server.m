// libcocoa/pasteboard/NSPasteboard+Server.m - which pasteboard server a process talks to: a running one, else
// its own.
//
// GNUstep would start a daemon where there is none, and wait for it. Here none is ever started.
#import <AppKit/AppKit.h>
#include <objc/runtime.h>

#import "libcocoa/pasteboard/QVXPasteboardServer.h"

@interface NSPasteboard (Private)
+ (void)_localServer:(id<GSPasteboardSvr>)server;  // does not retain
@end

static IMP stock_server;                     // +[NSPasteboard _pbs]
static CocoaPasteboardServer* local_server;  // kept for the life of the process once it is chosen

static BOOL a_server_runs(void) {
  NSString* host = [[NSUserDefaults standardUserDefaults] stringForKey:@"NSHost"];
  @try {
    return [NSConnection rootProxyForConnectionWithRegisteredName:PBSNAME
                                                             host:host != nil ? host : @""] != nil;
  } @catch (NSException*) {
    return NO;  // no folder for ports, no network: nobody to talk to
  }
}

// A server that ran once may be gone, so it is looked for on each call, until this process has its own. After
// that it stays with its own: half the data here and half there would be worse.
static id chosen_server(id self, SEL selector) {
  @synchronized(self) {
    if (local_server == nil && !a_server_runs()) {
      local_server = [[CocoaPasteboardServer alloc] init];
      [NSPasteboard _localServer:local_server];
    }
  }
  return ((id(*)(id, SEL))stock_server)(self, selector);
}

@interface CocoaPasteboardChoice : NSObject
@end

@implementation CocoaPasteboardChoice

+ (void)load {
  Method stock = class_getClassMethod(objc_getClass("NSPasteboard"), @selector(_pbs));
  if (stock != NULL) stock_server = method_setImplementation(stock, (IMP)chosen_server);
}

@end

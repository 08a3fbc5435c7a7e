// libcocoa/pasteboard/NSPasteboard+Server.m - which pasteboard server a process talks to: a running one, else
// its own.
//
// GNUstep would start a daemon where there is none, and wait for it. Here none is ever started.
#import <AppKit/AppKit.h>

#import "libcocoa/pasteboard/QVXPasteboardServer.h"
#import "libcocoa/runtime/stock_methods.h"

@interface NSPasteboard (Private)
+ (void)_localServer:(id<GSPasteboardSvr>)server;  // does not retain
@end

static QVXPasteboardServer* localServer;  // kept for the life of the process once it is chosen

static BOOL ServerRuns(void) {
  NSString* host = [[NSUserDefaults standardUserDefaults] stringForKey:@"NSHost"];
  @try {
    return [NSConnection rootProxyForConnectionWithRegisteredName:PBSNAME host:host ? host : @""] != nil;
  } @catch (NSException*) {
    return NO;  // no folder for ports, no network: nobody to talk to
  }
}

@implementation NSPasteboard (QVXServer)

// A server that ran once may be gone, so it is looked for on each call, until this process has its own. After
// that it stays with its own: half the data here and half there would be worse.
+ (id<GSPasteboardSvr>)_pbs {
  static QVXMethod stock;
  QVXPasteboardServer* server = __atomic_load_n(&localServer, __ATOMIC_ACQUIRE);
  if (!server && !ServerRuns()) {
    QVXPasteboardServer* made = [[QVXPasteboardServer alloc] init];
    if (__atomic_compare_exchange_n(&localServer, &server, made, NO, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE))
      server = made;
    else
      [made release];                    // another thread was first
    [NSPasteboard _localServer:server];  // by both: neither goes on before GNUstep knows it
  }
  return ((id(*)(id, SEL))QVXStockClassMethod("NSPasteboard", _cmd, &stock))(self, _cmd);
}

@end

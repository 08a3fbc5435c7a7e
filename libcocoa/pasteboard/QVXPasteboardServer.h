// libcocoa/pasteboard/QVXPasteboardServer.h - a pasteboard server inside the process.
#pragma once

#import <Foundation/Foundation.h>
#import <GNUstepGUI/GSPasteboardServer.h>

// The server that GNUstep's NSPasteboard talks to: pasteboards by name. Use it from one thread, like the
// client itself. It may also be vended to other processes.
@interface QVXPasteboardServer : NSObject <GSPasteboardSvr> {
  NSMutableDictionary* _pasteboards;
  unsigned _uniqueCount;
}
@end

// libcocoa/pasteboard/QVXPasteboardServer.h - a pasteboard server inside the process.
#pragma once

#import <Foundation/Foundation.h>
#import <GNUstepGUI/GSPasteboardServer.h>

// The server that GNUstep's NSPasteboard talks to: pasteboards by name. Not for several threads at once, as
// the client is not either. An object of this class may also be vended to other processes.
@interface QVXPasteboardServer : NSObject <GSPasteboardSvr> {
  NSMutableDictionary* _pasteboards;
  unsigned _uniqueCount;
}
@end

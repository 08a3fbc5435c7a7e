// tests/libcocoa/pasteboard_peer.m - a process that serves pasteboards, or writes to or reads from one.
//
//   pasteboard_peer serve        says "ready", serves for ten seconds
//   pasteboard_peer write TEXT
//   pasteboard_peer read         prints the text
#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSPasteboardServer.h>
#include <stdio.h>
#include <string.h>

static int serve(void) {
  id server = [[NSClassFromString(@"QVXPasteboardServer") alloc] init];
  NSConnection* connection = [[NSConnection alloc] init];
  [connection setRootObject:server];
  if (![connection registerName:PBSNAME]) return 1;
  puts("ready");
  fflush(stdout);
  [[NSRunLoop currentRunLoop] runUntilDate:[NSDate dateWithTimeIntervalSinceNow:10]];
  return 0;
}

int main(int argc, char** argv) {
  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  int status = 0;
  if (argc > 1 && strcmp(argv[1], "serve") == 0) {
    status = serve();
  } else {
    NSPasteboard* pasteboard = [NSPasteboard pasteboardWithName:@"between processes"];
    if (argc > 2) {
      [pasteboard declareTypes:[NSArray arrayWithObject:NSStringPboardType] owner:nil];
      status =
          [pasteboard setString:[NSString stringWithUTF8String:argv[2]] forType:NSStringPboardType] ? 0 : 1;
    } else {
      NSString* text = [pasteboard stringForType:NSStringPboardType];
      puts(text != nil ? [text UTF8String] : "(nothing)");
    }
  }
  [pool drain];
  return status;
}

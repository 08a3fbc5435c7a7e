// tests/libcocoa/pasteboard_owner.m - an owner that supplies its data on demand.
#import <AppKit/AppKit.h>

@interface LazyOwner : NSObject {
  int _asked;
  int _lost;
  BOOL _silent;
}
@end

@implementation LazyOwner

- (int)timesAsked {
  return _asked;
}

- (int)timesLost {
  return _lost;
}

- (void)breakPromises {
  _silent = YES;
}

- (void)pasteboard:(NSPasteboard*)pasteboard provideDataForType:(NSString*)type {
  ++_asked;
  if (!_silent) [pasteboard setData:[type dataUsingEncoding:NSUTF8StringEncoding] forType:type];
}

- (void)pasteboardChangedOwner:(NSPasteboard*)pasteboard {
  ++_lost;
}

@end

// libcocoa/lists/QVXColorKeys.h - the keys of a colour list in their order.
#pragma once

#import <Foundation/Foundation.h>

// Strings that don't change, each once. Remembers where it has put each, so that finding one takes no longer
// the more there are: only as long as keys before it have come and gone since.
@interface QVXColorKeys : NSMutableArray {
  NSMutableArray* _keys;
  NSMapTable* _places;  // from a key to the place it was put at
}
@end

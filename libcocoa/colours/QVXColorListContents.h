// libcocoa/colours/QVXColorListContents.h - what an archive or a file of a colour list holds.
#pragma once

#import <AppKit/AppKit.h>

// Colours under their keys, and the keys in order, each once.
@interface QVXColorListContents : NSObject {
  NSString* _name;
  NSMutableDictionary* _colors;
  NSMutableArray* _keys;
}
@property(nonatomic, copy) NSString* name;  // nil where the format holds none
@property(nonatomic, readonly) NSDictionary* colors;
@property(nonatomic, readonly) NSArray* keys;

// A key that is there already keeps its place and gets the new colour.
- (void)setColor:(NSColor*)color forKey:(NSString*)key;
@end

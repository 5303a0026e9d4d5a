// What a Mac's Foundation has and GNUstep's lacks, as far as the services use it. Seen before each source that is
// checked against GNUstep's headers.
#pragma once

#ifdef __OBJC__

#import <Foundation/Foundation.h>

enum { NSFileWriteVolumeReadOnlyError = 642 };

@interface NSFileManager (FoundationAdditions)
- (NSString*)destinationOfSymbolicLinkAtPath:(NSString*)path error:(NSError**)error;
- (BOOL)setAttributes:(NSDictionary*)attributes ofItemAtPath:(NSString*)path error:(NSError**)error;
@end

@interface NSURL (FoundationAdditions)
- (BOOL)setResourceValue:(id)value forKey:(NSString*)key error:(NSError**)error;
@end

#endif

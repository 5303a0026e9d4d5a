// What a Mac's file manager has and GNUstep's lacks, by the calls that GNUstep has in their place.
#import <Foundation/Foundation.h>

#include <cerrno>

@implementation NSFileManager (FoundationStandIns)

- (NSString*)destinationOfSymbolicLinkAtPath:(NSString*)path error:(NSError**)error {
    static_cast<void>(error);
    return [self pathContentOfSymbolicLinkAtPath:path];
}

- (BOOL)setAttributes:(NSDictionary*)attributes ofItemAtPath:(NSString*)path error:(NSError**)error {
    const bool exists = [self attributesOfItemAtPath:path error:nullptr] != nil;
    if (exists && [self changeFileAttributes:attributes atPath:path]) {
        return YES;
    }
    if (error != nullptr) {
        *error = [NSError errorWithDomain:NSPOSIXErrorDomain code:exists ? EPERM : ENOENT userInfo:nil];
    }
    return NO;
}

@end

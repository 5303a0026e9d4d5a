// The declarations of AppKitAdditions.h, made real for the run.
#import <AppKit/AppKit.h>

namespace {

NSMapTable* labels() {
    static NSMapTable* const table = NSCreateMapTable(NSNonOwnedPointerMapKeyCallBacks, NSObjectMapValueCallBacks, 8);
    return table;
}

}  // namespace

@implementation NSApplication (AppKitAdditions)

- (BOOL)isFullKeyboardAccessEnabled {
    return [[NSUserDefaults standardUserDefaults] boolForKey:@"FullKeyboardAccess"];
}

@end

@implementation NSWindow (AppKitAdditions)

- (void)setPreventsApplicationTerminationWhenModal:(BOOL)prevents {
    static_cast<void>(prevents);  // nothing is prevented here
}

@end

@implementation NSView (AppKitAdditions)

- (void)setAccessibilityLabel:(NSString*)label {
    NSMapInsert(labels(), self, label);
}

- (NSString*)accessibilityLabel {
    return static_cast<NSString*>(NSMapGet(labels(), self));
}

@end

@implementation NSColor (AppKitAdditions)

+ (NSColor*)colorWithName:(NSString*)name dynamicProvider:(NSColor* (^)(NSAppearance*))provider {
    static_cast<void>(name);
    return provider([NSAppearance currentAppearance]);
}

+ (NSColor*)linkColor {
    return [NSColor cyanColor];
}

@end

// On a Mac a user default is the value of its key, for a binding too.
@implementation NSUserDefaults (AppKitAdditions)

- (id)valueForKey:(NSString*)key {
    if ([key hasPrefix:@"@"]) {  // a collection operator, which a user default is not
        [NSException raise:NSUndefinedKeyException format:@"no value %@", key];
    }
    return [self objectForKey:key];
}

- (void)setValue:(id)value forKey:(NSString*)key {
    [self setObject:value forKey:key];
}

@end

// GNUstep has no reader of web pages. This one shows the page as it is handed to the reader.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

@implementation NSAttributedString (AppKitAdditions)

- (id)initWithHTML:(NSData*)data options:(NSDictionary*)options documentAttributes:(NSDictionary**)attributes {
    static_cast<void>(options);
    static_cast<void>(attributes);
    NSString* const page = [[[NSString alloc] initWithData:data encoding:NSASCIIStringEncoding] autorelease];
    return [self initWithString:page];
}

@end

#import "platform/macos/appkit/AgreementText.h"

#include <strings.h>

#include <cstring>
#include <string>

#include "platform/macos/appkit/SafeHtml.h"
#import "platform/macos/foundation/Guarded.h"
#import "platform/macos/foundation/Text.h"

namespace platform::macos {

namespace {

constexpr unsigned long long largestPicture = 16 << 20;  // bytes
constexpr unichar byteOrderMark = 0xFEFF;

bool hasExtension(NSString* path, NSArray* wanted) {
    return [wanted containsObject:[[path pathExtension] lowercaseString]] == YES;
}

bool beginsWith(NSData* bytes, NSUInteger at, const char* wanted, NSUInteger length) {
    return
        [bytes length] >= at + length && strncasecmp(static_cast<const char*>([bytes bytes]) + at, wanted, length) == 0;
}

bool opensLikeRichText(NSData* bytes) { return beginsWith(bytes, 0, "{\\rtf", 5); }

bool opensLikeHtml(NSData* bytes) {
    const auto* const characters = static_cast<const char*>([bytes bytes]);
    NSUInteger begin = beginsWith(bytes, 0, "\xEF\xBB\xBF", 3) ? 3 : 0;
    while (begin < [bytes length] && std::strchr(" \t\r\n", characters[begin]) != nullptr) {
        ++begin;
    }
    return beginsWith(bytes, begin, "<!doctype html", 14) || beginsWith(bytes, begin, "<html", 5);
}

// The encodings that web pages name and Foundation has a name for.
NSStringEncoding encodingOf(NSString* name) {
    const struct {
        NSString* name;
        NSStringEncoding encoding;
    } all[] = {{@"shift_jis", NSShiftJISStringEncoding},         {@"euc-jp", NSJapaneseEUCStringEncoding},
               {@"iso-2022-jp", NSISO2022JPStringEncoding},      {@"windows-1250", NSWindowsCP1250StringEncoding},
               {@"windows-1251", NSWindowsCP1251StringEncoding}, {@"windows-1252", NSWindowsCP1252StringEncoding},
               {@"windows-1253", NSWindowsCP1253StringEncoding}, {@"windows-1254", NSWindowsCP1254StringEncoding},
               {@"iso-8859-1", NSWindowsCP1252StringEncoding},   {@"iso-8859-2", NSISOLatin2StringEncoding},
               {@"macintosh", NSMacOSRomanStringEncoding}};
    for (const auto& each : all) {
        if ([name caseInsensitiveCompare:each.name] == NSOrderedSame) {
            return each.encoding;
        }
    }
    return NSUTF8StringEncoding;
}

// What stands behind "charset=" near the page's begin.
NSString* encodingNamedBy(NSData* page) {
    NSData* const front = [page subdataWithRange:NSMakeRange(0, MIN([page length], 1024U))];
    NSString* const text = [[[NSString alloc] initWithData:front encoding:NSISOLatin1StringEncoding] autorelease];
    const NSRange found = [text rangeOfString:@"charset=" options:NSCaseInsensitiveSearch];
    if (found.length == 0) {
        return @"";
    }
    NSString* const behind = [text substringFromIndex:NSMaxRange(found)];
    NSCharacterSet* const others =
        [[NSCharacterSet characterSetWithCharactersInString:@"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                                            @"0123456789_-"] invertedSet];
    NSString* const unquoted =
        [behind hasPrefix:@"\""] || [behind hasPrefix:@"'"] ? [behind substringFromIndex:1] : behind;
    const NSRange end = [unquoted rangeOfCharacterFromSet:others];
    return end.length == 0 ? unquoted : [unquoted substringToIndex:end.location];
}

// By the byte-order mark, else in that encoding, else in UTF-8, else as a Western text, in which every byte is
// something.
NSString* decoded(NSData* bytes, NSStringEncoding wanted) {
    const bool marked = beginsWith(bytes, 0, "\xFF\xFE", 2) || beginsWith(bytes, 0, "\xFE\xFF", 2);
    const NSStringEncoding tried[] = {marked ? NSUnicodeStringEncoding : wanted, NSUTF8StringEncoding,
                                      NSWindowsCP1252StringEncoding, NSISOLatin1StringEncoding};
    for (const NSStringEncoding encoding : tried) {
        NSString* const text = [[[NSString alloc] initWithData:bytes encoding:encoding] autorelease];
        if (text != nil) {
            const bool isMarked = [text length] > 0 && [text characterAtIndex:0] == byteOrderMark;
            return isMarked ? [text substringFromIndex:1] : text;
        }
    }
    return @"";
}

NSAttributedString* plainText(NSData* bytes) {
    NSDictionary* const attributes =
        [NSDictionary dictionaryWithObject:[NSFont systemFontOfSize:[NSFont systemFontSize]]
                                    forKey:NSFontAttributeName];
    return [[[NSAttributedString alloc] initWithString:decoded(bytes, NSUTF8StringEncoding)
                                            attributes:attributes] autorelease];
}

// A regular file itself: a link could lead to any other.
std::string pictureAt(NSString* path) {
    std::string bytes;
    guarded("a picture of the agreement", [&] {
        NSDictionary* const attributes = [[NSFileManager defaultManager] attributesOfItemAtPath:path error:nullptr];
        if ([[attributes fileType] isEqualToString:NSFileTypeRegular] && [attributes fileSize] <= largestPicture) {
            bytes = fromNS([[NSData dataWithContentsOfFile:path] base64EncodedStringWithOptions:0]);
        }
    });
    return bytes;
}

NSAttributedString* webPage(NSData* bytes, NSString* path) {
    NSString* const folder = [path stringByDeletingLastPathComponent];
    const auto pictureBeside = [folder](const std::string& name) {
        return pictureAt([folder stringByAppendingPathComponent:toNS(name)]);
    };
    const std::string page = safeHtml(fromNS(decoded(bytes, encodingOf(encodingNamedBy(bytes)))), pictureBeside);
    NSDictionary* const options =
        [NSDictionary dictionaryWithObjectsAndKeys:[NSNumber numberWithUnsignedInteger:NSUTF8StringEncoding],
                                                   NSCharacterEncodingDocumentOption,
                                                   [NSURL URLWithString:@"about:blank"], NSBaseURLDocumentOption,
                                                   [NSNumber numberWithDouble:1], NSTimeoutDocumentOption, nil];
    return [[[NSAttributedString alloc] initWithHTML:[NSData dataWithBytes:page.data() length:page.size()]
                                             options:options
                                  documentAttributes:nullptr] autorelease];
}

NSAttributedString* folderWithRichText(NSString* path) {
    if (hasExtension(path, [NSArray arrayWithObject:@"rtfd"])) {
        return [[[NSAttributedString alloc] initWithPath:path documentAttributes:nullptr] autorelease];
    }
    NSFileWrapper* const folder = [[[NSFileWrapper alloc] initWithPath:path] autorelease];
    if (folder == nil) {
        return nil;
    }
    return [[[NSAttributedString alloc] initWithRTFDFileWrapper:folder documentAttributes:nullptr] autorelease];
}

NSAttributedString* richText(NSData* bytes, NSString* path) {
    if (hasExtension(path, [NSArray arrayWithObject:@"rtf"])) {
        return [[[NSAttributedString alloc] initWithPath:path documentAttributes:nullptr] autorelease];
    }
    return [[[NSAttributedString alloc] initWithRTF:bytes documentAttributes:nullptr] autorelease];
}

}  // namespace

NSAttributedString* agreementText(NSString* path) {
    BOOL isFolder = NO;
    if ([[NSFileManager defaultManager] fileExistsAtPath:path isDirectory:&isFolder] && isFolder) {
        return folderWithRichText(path);
    }
    NSData* const bytes = [NSData dataWithContentsOfFile:path];
    if (bytes == nil) {
        return nil;
    }
    NSAttributedString* text = nil;
    if (opensLikeRichText(bytes)) {
        text = richText(bytes, path);
    } else if (hasExtension(path, [NSArray arrayWithObjects:@"html", @"htm", @"xhtml", nil]) || opensLikeHtml(bytes)) {
        text = webPage(bytes, path);
    }
    return text != nil ? text : plainText(bytes);
}

}  // namespace platform::macos

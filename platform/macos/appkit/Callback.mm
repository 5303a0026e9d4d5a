#import "platform/macos/appkit/Callback.h"

#include <utility>

#include "platform/macos/appkit/Callout.h"

@implementation WickfieldCallback

+ (instancetype)callbackWithWork:(std::function<void(long)>)work {
    WickfieldCallback* const made = [[[self alloc] init] autorelease];
    made->m_work = new std::function<void(long)>(std::move(work));
    return made;
}

- (void)dealloc {
    delete m_work;
    [super dealloc];
}

- (void)perform:(id)sender {
    static_cast<void>(sender);
    [[self retain] autorelease];
    if (m_work != nullptr) {
        platform::macos::callOut(*m_work, 0);
    }
}

- (void)keepUntilEnd {
    if (!m_kept) {
        m_kept = YES;
        [self retain];
    }
}

- (void)sheetDidEnd:(id)sheet returnCode:(NSInteger)returnCode contextInfo:(void*)contextInfo {
    static_cast<void>(sheet);
    static_cast<void>(contextInfo);
    [[self retain] autorelease];
    if (m_kept) {
        m_kept = NO;
        [self autorelease];
    }
    if (m_work != nullptr) {
        const std::function<void(long)> work = std::exchange(*m_work, nullptr);
        platform::macos::callOut(work, static_cast<long>(returnCode));
    }
}

- (void)clear {
    if (m_work != nullptr) {
        *m_work = nullptr;
    }
}

- (BOOL)isCleared {
    return m_work == nullptr || !*m_work ? YES : NO;
}

@end

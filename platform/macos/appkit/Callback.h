#pragma once

#import <Foundation/Foundation.h>

#include <functional>

// Work of C++ as the target of a control or the modal delegate of a sheet. Main thread only.
@interface WickfieldCallback : NSObject {
@private
    std::function<void(long)>* m_work;
    BOOL m_kept;
}

+ (instancetype)callbackWithWork:(std::function<void(long)>)work;

// The control's action; the work gets 0.
- (void)perform:(id)sender;

// Stays alive until the sheet has ended: a sheet does not own its modal delegate.
- (void)keepUntilEnd;

// The end of a sheet or an alert; the work gets the return code, once.
- (void)sheetDidEnd:(id)sheet returnCode:(NSInteger)returnCode contextInfo:(void*)contextInfo;

// Does nothing from here on.
- (void)clear;
- (BOOL)isCleared;

@end

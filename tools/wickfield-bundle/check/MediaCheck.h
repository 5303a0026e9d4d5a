// An agreement or an image, read by a helper program as the installer's window reads it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "tools/wickfield-bundle/check/TimedRun.h"

namespace wickfield_bundle {

struct MediaReport {
    // refused: no window can show it, `reason` says why. notChecked: it could not be found out, `reason` says why.
    enum class Outcome { read, refused, notChecked };

    Outcome outcome = Outcome::notChecked;
    std::string reason;          // a clause
    std::size_t characters = 0;  // of an agreement, without blanks
    std::size_t pictures = 0;
    bool isComplete = true;  // false where the window shows only a part of the text
    std::size_t width = 0;   // of an image, in pixels
    std::size_t height = 0;
};

enum class Media { agreement, image };

// The helper begins at once, and is given ten seconds.
class MediaCheck {
public:
    MediaCheck(const std::string& helper, Media media, const std::string& path);

    MediaReport finish();  // waits for the helper; at most once

private:
    TimedRun m_run;
};

// Where the helper lies when it is installed with this program. To be asked before another bundle stands in for the
// program's own.
std::string mediaHelper();

}  // namespace wickfield_bundle

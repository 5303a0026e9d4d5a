// Pictures that rich text carries as digits.
#pragma once

#include <optional>
#include <string_view>

#include "platform/linux/qt/agreement/RtfModel.h"

namespace platform::qt {

class RtfPictureData {
public:
    void begin() { *this = {}; }
    void word(std::string_view word, std::optional<int> value);
    void digits(std::string_view text);  // two hexadecimal digits a byte; what is no digit is passed over
    void bytes(std::string_view bytes);

    // None for a kind of picture that no reader here knows (drawings of another system), and for an empty one.
    std::optional<RtfPicture> finish();

private:
    RtfPicture m_picture;
    double m_scaleX = 1;
    double m_scaleY = 1;
    int m_digit = -1;  // the first of two
    bool m_known = false;
};

}  // namespace platform::qt

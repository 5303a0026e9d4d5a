#include "app/NSString+Hyperlink.h"

platform::AttributedString hyperlinkFromString(const std::string& text, const std::string& withURL) {
    return {{.text = text,
             .link = withURL,
             .color = platform::TextColor::blue,
             .underline = platform::UnderlineStyle::single}};
}

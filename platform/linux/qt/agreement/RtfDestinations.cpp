#include "platform/linux/qt/agreement/RtfDestinations.h"

#include <unordered_map>
#include <unordered_set>

namespace platform::qt {

namespace {

// Pages, editing history and formulas for indexes; drawings as other systems keep them; whatever comes in a second
// form.
const std::unordered_set<std::string_view>& skippedWords() {
    static const std::unordered_set<std::string_view> words{
        "stylesheet", "info",        "header",     "headerl",  "headerr",      "headerf",      "footer",
        "footerl",    "footerr",     "footerf",    "filetbl",  "revtbl",       "themedata",    "colorschememapping",
        "datastore",  "userprops",   "template",   "picprop",  "latentstyles", "levelnumbers", "listname",
        "objdata",    "listpicture", "objclass",   "objname",  "annotation",   "nonesttables", "nesttableprops",
        "atnid",      "atnauthor",   "nonshppict", "shprslt",  "xe",           "tc",           "rxe",
        "txe",        "sp",          "sn",         "sv",       "pntxta",       "pntxtb",       "ftnsep",
        "ftnsepc",    "ftncn",       "aftnsep",    "aftnsepc", "aftncn",       "private",
    };
    return words;
}

}  // namespace

std::optional<RtfDestination> destinationOfWord(std::string_view word) {
    using enum RtfDestination;
    static const std::unordered_map<std::string_view, RtfDestination> destinations{
        {"fonttbl", fontTable},   {"colortbl", colorTable},
        {"listtable", lists},     {"listoverridetable", lists},
        {"leveltext", levelText}, {"fldinst", instruction},
        {"fldrslt", body},        {"bkmkstart", bookmark},
        {"pict", picture},        {"shppict", body},
        {"shpinst", shape},       {"shptxt", body},
        {"object", shape},        {"NeXTGraphic", attachment},
        {"listtext", body},       {"pntext", body},
        {"footnote", note},       {"result", body},
    };
    if (const auto found = destinations.find(word); found != destinations.end()) {
        return found->second;
    }
    return skippedWords().contains(word) ? std::optional(skipped) : std::nullopt;
}

}  // namespace platform::qt

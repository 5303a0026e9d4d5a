// Reads rich text into what it says.
#pragma once

#include <QByteArray>
#include <string_view>
#include <vector>

#include "platform/linux/qt/agreement/RtfBody.h"
#include "platform/linux/qt/agreement/RtfDestinations.h"
#include "platform/linux/qt/agreement/RtfHeader.h"
#include "platform/linux/qt/agreement/RtfModel.h"
#include "platform/linux/qt/agreement/RtfPictures.h"
#include "platform/linux/qt/agreement/RtfTokenizer.h"

namespace platform::qt {

// One reading of one text; the bytes must outlive it. Never fails: damaged text gives what of it can be read.
class RtfReader {
public:
    explicit RtfReader(std::string_view bytes, const RtfLimits& limits = {});
    RtfDocument read();

private:
    struct Group {
        RtfPlace place{};
        RtfDestination destination = RtfDestination::body;
        int fallback = 1;    // characters that stand in for one that is given by its number
        bool began = false;  // the destination begins with this group
        bool field = false;
    };

    void handle(const RtfToken& token);
    void openGroup();
    void closeGroup();
    void handleText(std::string_view text);
    void handleByte(char byte);
    void handleBinary(std::string_view bytes);
    void handleSymbol(char symbol);
    void handleWord(const RtfToken& token);
    bool handleDestination(std::string_view word);
    void beginDestination(std::string_view word, RtfDestination destination);
    void endDestination(RtfDestination destination);
    void handleContentWord(std::string_view word, std::optional<int> value);
    bool handleBreak(std::string_view word);
    void handleUnicode(int value);

    bool skipFallback();
    bool isContent() const;
    const RtfFont* font() const;
    void flushBytes();
    void write(const QString& text);
    void writeNote(QString text);
    void writeAttachment();

    Group& group() { return m_groups.back(); }
    const Group& group() const { return m_groups.back(); }

    RtfTokenizer m_tokens;
    RtfDocument m_document;
    RtfSettings m_settings;
    RtfFontTable m_fontTable{m_document.fonts};
    RtfColorTable m_colorTable{m_document.colors};
    RtfBody m_body;
    RtfPictureData m_picture;
    std::vector<Group> m_groups;
    std::size_t m_deeperGroups = 0;       // open ones beyond the depth that is kept apart
    std::vector<QString> m_instructions;  // of the open fields
    QString m_name;                       // of a bookmark or an attachment
    QByteArray m_bytes;                   // text that waits for its code page
    int m_fallbackLeft = 0;
    bool m_starred = false;
    bool m_noteBegins = false;
    bool m_noteBreak = false;        // a paragraph of the footnote ended
    bool m_afterAttachment = false;  // a character that stands in for it follows
};

}  // namespace platform::qt

// A line of text with links. Links are reached by Tab and opened by the host's browser.
#pragma once

#include <QLabel>

#include "platform/ports/AttributedString.h"

namespace platform::qt {

class LinkLabel : public QLabel {
    Q_OBJECT

public:
    explicit LinkLabel(QWidget* parent = nullptr);

    void setRuns(const AttributedString& runs);
    QString plainText() const;

    QSize minimumSizeHint() const override;

protected:
    void focusInEvent(QFocusEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void rebuild();

    AttributedString m_runs;
};

// As HTML in which the text is only text. Links and blue text take the palette's link colour, whose contrast is known.
QString htmlOf(const AttributedString& runs, const QPalette& palette);

}  // namespace platform::qt

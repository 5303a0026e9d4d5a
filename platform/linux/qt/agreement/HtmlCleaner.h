// HTML without what a reader of the page would not see.
#pragma once

#include <QSet>
#include <QString>
#include <QStringView>

namespace platform::qt {

struct VisibleHtml {
    QString html{};
    bool complete = true;  // false when the page has more tags than are laid out within moments, and was cut there
};

// Leaves out comments, scripts and whatever else is not text (forms, drawings, embedded objects), elements that are
// hidden by an attribute, by their own style or by a simple rule of the page's style sheets, and what refers to other
// documents. Everything else stays as it is, but for what lies far too deep in other elements. Unclosed and misplaced
// tags are taken as a browser takes them; nothing fails.
VisibleHtml visibleHtml(QStringView html);

// The simple selectors ("p", ".fine", "#note", "p.fine") that a style sheet hides; rules for other media and rules that
// depend on where an element stands are passed over. Lower case.
QSet<QString> hiddenSelectors(QStringView styleSheet);

}  // namespace platform::qt

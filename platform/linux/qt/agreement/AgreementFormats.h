// Goes through the formats of a text document and changes them in place.
#pragma once

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextTable>
#include <utility>
#include <vector>

namespace platform::qt {

// Each takes a function that changes a format; formats that it leaves as they are cost nothing.

// Of frames and tables: change(QTextFrameFormat&), and of table cells: changeCell(QTextCharFormat&).
template <typename Change, typename ChangeCell>
void changeFrames(QTextFrame& frame, const Change& change, const ChangeCell& changeCell) {
    QTextFrameFormat format = frame.frameFormat();
    change(format);
    if (format != frame.frameFormat()) {
        frame.setFrameFormat(format);
    }
    if (auto* table = qobject_cast<QTextTable*>(&frame)) {
        for (int row = 0; row < table->rows(); ++row) {
            for (int column = 0; column < table->columns(); ++column) {
                QTextTableCell cell = table->cellAt(row, column);
                QTextCharFormat cellFormat = cell.format();
                changeCell(cellFormat);
                if (cell.row() == row && cell.column() == column && cellFormat != cell.format()) {
                    cell.setFormat(cellFormat);
                }
            }
        }
    }
    const QList<QTextFrame*> children = frame.childFrames();
    for (QTextFrame* child : children) {
        changeFrames(*child, change, changeCell);
    }
}

// Of paragraphs: change(QTextBlockFormat&).
template <typename Change>
void changeParagraphs(QTextDocument& document, const Change& change) {
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        QTextBlockFormat format = block.blockFormat();
        change(format);
        if (format != block.blockFormat()) {
            QTextCursor(block).setBlockFormat(format);
        }
    }
}

// Of the text, the marks of paragraphs included: change(QTextCharFormat&).
template <typename Change>
void changeText(QTextDocument& document, const Change& change) {
    struct Fragment {
        int position;
        int length;
        QTextCharFormat format;
    };
    std::vector<Fragment> fragments;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        QTextCursor cursor(block);
        QTextCharFormat mark = block.charFormat();
        change(mark);
        if (mark != block.charFormat()) {
            cursor.setBlockCharFormat(mark);
        }
        // Listed first, changed afterwards: a change ends what an iterator stands on.
        fragments.clear();
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            QTextCharFormat format = it.fragment().charFormat();
            change(format);
            if (format != it.fragment().charFormat()) {
                fragments.push_back({it.fragment().position(), it.fragment().length(), std::move(format)});
            }
        }
        for (const Fragment& fragment : fragments) {
            cursor.setPosition(fragment.position);
            cursor.setPosition(fragment.position + fragment.length, QTextCursor::KeepAnchor);
            cursor.setCharFormat(fragment.format);
        }
    }
}

}  // namespace platform::qt

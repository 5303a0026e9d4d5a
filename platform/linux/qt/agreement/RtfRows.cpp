#include "platform/linux/qt/agreement/RtfRows.h"

#include <algorithm>
#include <utility>

namespace platform::qt {

namespace {

constexpr int kWidest = 31680;
constexpr int kCellWidth = 2160;  // for a cell that nobody gave a shape
constexpr std::size_t kMostCells = 64;

}  // namespace

bool RtfRows::word(std::string_view word, std::optional<int> value) {
    if (word == "trowd") {
        m_left = 0;
        m_shapes.clear();
        m_next = {};
        m_cellBorder = false;
    } else if (word == "trleft") {
        m_left = std::clamp(value.value_or(0), -kWidest, kWidest);
    } else if (word == "cellx") {
        if (m_shapes.size() < kMostCells) {
            m_next.right = std::clamp(value.value_or(0), -kWidest, kWidest);
            m_shapes.push_back(m_next);
        }
        m_next = {};
        m_cellBorder = false;
    } else if (word == "clcbpat") {
        m_next.background = std::max(value.value_or(0), 0);
    } else if (word.starts_with("clm") || word.starts_with("clv")) {
        mergeWord(word);
    } else {
        return borderWord(word);
    }
    return true;
}

void RtfRows::mergeWord(std::string_view word) {
    if (word == "clvmrg") {
        m_next.continuesAbove = true;
    } else if (word == "clmrg") {
        m_next.continuesLeft = true;
    } else if (word == "clvertalc") {
        m_next.vertical = RtfCellShape::Vertical::middle;
    } else if (word == "clvertalb") {
        m_next.vertical = RtfCellShape::Vertical::bottom;
    }
}

bool RtfRows::borderWord(std::string_view word) {
    if (word.starts_with("clbrdr")) {
        m_cellBorder = true;
        return true;
    }
    if (word.starts_with("trbrdr")) {
        m_cellBorder = false;
        return true;
    }
    const bool isLine = word.starts_with("brdr") && word != "brdrnone" && word != "brdrnil" && word != "brdrtbl" &&
                        word != "brdrw" && word != "brdrcf";
    if (m_cellBorder && isLine) {
        m_next.lines = true;
        return true;
    }
    return false;
}

void RtfRows::addParagraph(RtfParagraph paragraph) { m_cell.push_back(std::move(paragraph)); }

void RtfRows::endCell() {
    if (m_cells.size() >= kMostCells) {
        // No page is that wide: what is left of the row goes on in its last cell.
        std::move(m_cell.begin(), m_cell.end(), std::back_inserter(m_cells.back().paragraphs));
        m_cell.clear();
        return;
    }
    m_cells.push_back({.paragraphs = std::exchange(m_cell, {})});
}

RtfRow RtfRows::endRow() {
    if (!m_cell.empty()) {
        endCell();
    }
    RtfRow row{.left = m_left, .cells = std::exchange(m_cells, {})};
    row.cells.resize(std::max(row.cells.size(), m_shapes.size()));
    int right = m_left;
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
        RtfCellShape& shape = row.cells[i].shape;
        shape = i < m_shapes.size() ? m_shapes[i] : RtfCellShape{};
        if (shape.right <= right) {
            shape.right = right + (i < m_shapes.size() ? 1 : kCellWidth);
        }
        right = shape.right;
    }
    return row;
}

}  // namespace platform::qt

// The rows of a rich text table, as they come along.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/linux/qt/agreement/RtfModel.h"

namespace platform::qt {

// Rich text describes the shape of a row first, fills its cells one after another and ends it last; a row without a
// shape of its own has that of the row before it.
class RtfRows {
public:
    // Whether the word is one that shapes a row.
    bool word(std::string_view word, std::optional<int> value);

    void addParagraph(RtfParagraph paragraph);  // to the cell that is being filled
    void endCell();
    bool isOpen() const { return !m_cell.empty() || !m_cells.empty(); }

    // The row as it was filled: a cell without a shape gets one, a shape without a cell an empty cell.
    RtfRow endRow();

private:
    bool borderWord(std::string_view word);
    void mergeWord(std::string_view word);

    int m_left = 0;
    std::vector<RtfCellShape> m_shapes;
    RtfCellShape m_next;
    bool m_cellBorder = false;
    std::vector<RtfParagraph> m_cell;
    std::vector<RtfCell> m_cells;
};

}  // namespace platform::qt

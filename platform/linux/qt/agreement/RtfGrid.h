// The columns that the rows of a rich text table share.
#pragma once

#include <optional>
#include <vector>

#include "platform/linux/qt/agreement/RtfModel.h"

namespace platform::qt {

struct RtfPlacedCell {
    int row = 0;
    int column = 0;
    int rows = 1;
    int columns = 1;
    RtfCellShape shape{};
    std::vector<const RtfParagraph*> paragraphs{};  // of the table's rows
};

struct RtfGrid {
    int rows = 0;
    std::vector<int> widths{};  // of the columns, in twips
    std::vector<RtfPlacedCell> cells{};
};

// In rich text each row has edges of its own; a grid has every edge that any row has, and cells that span columns.
// Edges that lie close together count as one. None when the grid would be too large to lay out.
std::optional<RtfGrid> gridOf(const RtfTable& table);

}  // namespace platform::qt

#include "platform/linux/qt/agreement/RtfGrid.h"

#include <algorithm>
#include <iterator>

namespace platform::qt {

namespace {

constexpr int kClose = 40;
constexpr std::size_t kMostColumns = 64;
constexpr std::size_t kMostCells = 20'000;

std::vector<int> edgesOf(const RtfTable& table) {
    std::vector<int> all;
    for (const RtfRow& row : table.rows) {
        all.push_back(row.left);
        for (const RtfCell& cell : row.cells) {
            all.push_back(cell.shape.right);
        }
    }
    std::sort(all.begin(), all.end());
    std::vector<int> edges;
    for (int close = kClose; edges.empty() || edges.size() > kMostColumns + 1; close *= 2) {
        edges.clear();
        for (const int edge : all) {
            if (edges.empty() || edge - edges.back() > close) {
                edges.push_back(edge);
            }
        }
        if (all.empty()) {
            break;
        }
    }
    return edges;
}

class Placing {
public:
    explicit Placing(std::vector<int> edges) : m_edges(std::move(edges)) {}

    void placeRow(const RtfRow& row) {
        std::vector<std::size_t> present(m_above.size(), kNone);
        int column = edgeAt(row.left);
        bool first = true;
        for (const RtfCell& cell : row.cells) {
            const int end = std::max(edgeAt(cell.shape.right), column + 1);
            if (end > columns() || (cell.shape.continuesLeft && !first)) {
                extendLeft(present, cell, column, std::min(end, columns()));
                column = std::min(end, columns());
                continue;
            }
            place(present, cell, column, end);
            column = end;
            first = false;
        }
        m_above = std::move(present);
        ++m_grid.rows;
    }

    RtfGrid finish() {
        for (std::size_t i = 1; i < m_edges.size(); ++i) {
            m_grid.widths.push_back(m_edges[i] - m_edges[i - 1]);
        }
        return std::move(m_grid);
    }

private:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    int columns() const { return static_cast<int>(m_edges.size()) - 1; }

    // The last edge that is not beyond the position.
    int edgeAt(int position) const {
        const auto after = std::upper_bound(m_edges.begin(), m_edges.end(), position);
        return std::max(static_cast<int>(after - m_edges.begin()) - 1, 0);
    }

    void place(std::vector<std::size_t>& present, const RtfCell& cell, int column, int end) {
        const std::size_t above = m_above.at(static_cast<std::size_t>(column));
        if (cell.shape.continuesAbove && above != kNone && m_grid.cells[above].column == column &&
            m_grid.cells[above].columns == end - column) {
            ++m_grid.cells[above].rows;
            addText(m_grid.cells[above], cell);
            present.at(static_cast<std::size_t>(column)) = above;
            return;
        }
        m_grid.cells.push_back({.row = m_grid.rows, .column = column, .columns = end - column, .shape = cell.shape});
        for (const RtfParagraph& paragraph : cell.paragraphs) {
            m_grid.cells.back().paragraphs.push_back(&paragraph);
        }
        present.at(static_cast<std::size_t>(column)) = m_grid.cells.size() - 1;
    }

    // Into the cell before it, which grows unless it reaches up into other rows.
    void extendLeft(std::vector<std::size_t>& present, const RtfCell& cell, int column, int end) {
        for (int before = std::min(column, columns()) - 1; before >= 0; --before) {
            const std::size_t index = present.at(static_cast<std::size_t>(before));
            if (index != kNone) {
                RtfPlacedCell& placed = m_grid.cells[index];
                if (placed.rows == 1) {
                    placed.columns = end - placed.column;
                }
                addText(placed, cell);
                return;
            }
        }
    }

    static void addText(RtfPlacedCell& placed, const RtfCell& cell) {
        for (const RtfParagraph& paragraph : cell.paragraphs) {
            if (!paragraph.inlines.empty()) {
                placed.paragraphs.push_back(&paragraph);
            }
        }
    }

    std::vector<int> m_edges;
    RtfGrid m_grid;
    std::vector<std::size_t> m_above = std::vector<std::size_t>(m_edges.size(), kNone);
};

}  // namespace

std::optional<RtfGrid> gridOf(const RtfTable& table) {
    std::vector<int> edges = edgesOf(table);
    if (edges.size() < 2 || table.rows.size() * (edges.size() - 1) > kMostCells) {
        return std::nullopt;
    }
    Placing placing(std::move(edges));
    for (const RtfRow& row : table.rows) {
        placing.placeRow(row);
    }
    return placing.finish();
}

}  // namespace platform::qt

#include "ui/controls/flow_layout.h"

#include <algorithm>
#include <utility>

namespace wavo {

FlowLayout::~FlowLayout() {
    for (const QLayoutItem* const item : m_items) {
        delete item;
    }
}

QLayoutItem* FlowLayout::itemAt(int index) const {
    return index >= 0 && index < count() ? m_items[static_cast<std::size_t>(index)] : nullptr;
}

QLayoutItem* FlowLayout::takeAt(int index) {
    QLayoutItem* const item = itemAt(index);
    if (item != nullptr) {
        m_items.erase(m_items.begin() + index);
    }
    return item;
}

int FlowLayout::WidthOf(std::size_t item, bool is_close) const {
    return is_close ? m_items[item]->minimumSize().width() : m_items[item]->sizeHint().width();
}

FlowLayout::Row FlowLayout::RowOf(std::size_t first, std::size_t end, bool is_close) const {
    Row row{first, end, -spacing(), 0, is_close};
    for (std::size_t i = first; i < end; ++i) {
        row.width += WidthOf(i, is_close) + spacing();
        row.height = std::max(row.height, m_items[i]->sizeHint().height());
    }
    return row;
}

std::vector<FlowLayout::Row> FlowLayout::BreakAt(int width) const {
    std::vector<Row> rows;
    for (std::size_t i = 0; i < m_items.size(); ++i) {
        const Row longer =
            rows.empty() ? RowOf(i, i + 1, false) : RowOf(rows.back().first, i + 1, false);
        if (rows.empty() || longer.width > width) {
            rows.push_back(RowOf(i, i + 1, false));
        } else {
            rows.back() = longer;
        }
    }
    return rows;
}

std::vector<FlowLayout::Row> FlowLayout::RowsFor(int width) const {
    std::vector<Row> rows = BreakAt(width);
    if (rows.size() < 2) {
        return rows;
    }
    if (const Row close = RowOf(0, m_items.size(), true); close.width <= width) {
        return {close};
    }
    const auto widest = [](const std::vector<Row>& of) {
        return std::max_element(of.begin(), of.end(),
                                [](const Row& a, const Row& b) { return a.width < b.width; })
            ->width;
    };
    for (;;) {
        std::vector<Row> evener = BreakAt(widest(rows) - 1);
        if (evener.size() > rows.size() || widest(evener) >= widest(rows)) {
            return rows;
        }
        rows = std::move(evener);
    }
}

int FlowLayout::heightForWidth(int width) const {
    const QMargins margins = contentsMargins();
    int height = margins.top() + margins.bottom() - spacing();
    for (const Row& row : RowsFor(width - margins.left() - margins.right())) {
        height += row.height + spacing();
    }
    return height;
}

QSize FlowLayout::sizeHint() const {
    const QMargins margins = contentsMargins();
    QSize size(-spacing(), 0);
    for (const QLayoutItem* const item : m_items) {
        size.rwidth() += item->sizeHint().width() + spacing();
        size.setHeight(std::max(size.height(), item->sizeHint().height()));
    }
    return size.grownBy(margins);
}

QSize FlowLayout::minimumSize() const {
    QSize size;
    for (const QLayoutItem* const item : m_items) {
        size = size.expandedTo(item->minimumSize());
    }
    return size.grownBy(contentsMargins());
}

void FlowLayout::setGeometry(const QRect& rectangle) {
    QLayout::setGeometry(rectangle);
    const QRect area = rectangle.marginsRemoved(contentsMargins());
    QPoint corner = area.topLeft();
    for (const Row& row : RowsFor(area.width())) {
        PlaceRow(row, corner, area.width());
        corner.ry() += row.height + spacing();
    }
}

void FlowLayout::PlaceRow(const Row& row, const QPoint& corner, int width) {
    const auto expands = [](const QLayoutItem* item) {
        return (item->expandingDirections() & Qt::Horizontal) != 0;
    };
    const auto first = m_items.begin() + static_cast<std::ptrdiff_t>(row.first);
    const auto end = m_items.begin() + static_cast<std::ptrdiff_t>(row.end);
    auto expanding = std::count_if(first, end, expands);
    int left_over = std::max(0, width - row.width);
    int x = corner.x();
    for (auto item = first; item != end; ++item) {
        const auto place = static_cast<std::size_t>(item - m_items.begin());
        int item_width = std::min(WidthOf(place, row.is_close), width);
        if (expands(*item)) {
            const int room = std::max(0, (*item)->maximumSize().width() - item_width);
            const int part = std::min(left_over / static_cast<int>(expanding), room);
            item_width += part;
            left_over -= part;
            --expanding;
        }
        (*item)->setGeometry({x, corner.y(), item_width, row.height});
        x += item_width + spacing();
    }
}

}  // namespace wavo

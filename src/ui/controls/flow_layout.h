// Lays items out like words: from left to right, in as many rows as the width asks for.
//
// Invariants:
// 1. Items of a row have the height of its highest one.
// 2. Where all items fit into one row with their least widths, they stand in one row.
// 3. Several rows are as evenly long as their number allows.
// 4. What a row has left over in width goes to its items that expand, in equal parts, up to their
//    largest widths.
#pragma once

#include <QLayout>
#include <vector>

namespace wavo {

class FlowLayout : public QLayout {
 public:
    using QLayout::QLayout;
    ~FlowLayout() override;

    void addItem(QLayoutItem* item) override { m_items.push_back(item); }
    [[nodiscard]] int count() const override { return static_cast<int>(m_items.size()); }
    [[nodiscard]] QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;
    [[nodiscard]] Qt::Orientations expandingDirections() const override { return {}; }
    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;
    /// All items in one row.
    [[nodiscard]] QSize sizeHint() const override;
    /// The widest item alone.
    [[nodiscard]] QSize minimumSize() const override;
    void setGeometry(const QRect& rectangle) override;

 private:
    struct Row {
        std::size_t first;
        std::size_t end;
        int width;
        int height;
        bool is_close;  ///< its items have their least widths
    };

    [[nodiscard]] int WidthOf(std::size_t item, bool is_close) const;
    [[nodiscard]] Row RowOf(std::size_t first, std::size_t end, bool is_close) const;
    /// As many items into each row as have room in it.
    [[nodiscard]] std::vector<Row> BreakAt(int width) const;
    /// The rows for a width without margins.
    [[nodiscard]] std::vector<Row> RowsFor(int width) const;
    void PlaceRow(const Row& row, const QPoint& corner, int width);

    std::vector<QLayoutItem*> m_items;  ///< owned
};

}  // namespace wavo

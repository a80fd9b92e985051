// Pixels that something has been drawn on, row by row.
#pragma once

#include <QRect>
#include <vector>

namespace wavo {

/// Pixels of a row from column `first` to before `end`.
struct PixelRun {
    int row;
    int first;
    int end;
};

using PixelRuns = std::vector<PixelRun>;

/// Adds all pixels of a rectangle.
inline void AddRectangle(PixelRuns& runs, const QRect& rectangle) {
    for (int row = rectangle.top(); !rectangle.isEmpty() && row <= rectangle.bottom(); ++row) {
        runs.push_back({row, rectangle.left(), rectangle.right() + 1});
    }
}

}  // namespace wavo

// A table of positioning moves, with the figures of each.
#pragma once

#include <string>

#include "measure/step_response.h"

class QTableWidget;

namespace wavo {

/// Gives a table that is empty its columns.
void MakeMoveTable(QTableWidget& table);

/// Fills a row. `cycle_time`: seconds per line.
void ShowMove(QTableWidget& table, int row, const std::string& axis, const measure::Move& move,
              double cycle_time);

}  // namespace wavo

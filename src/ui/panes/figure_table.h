// A table of figures with their limits and what became of them.
#pragma once

#include <span>

#include "measure/verdict.h"

class QTableWidget;

namespace wavo {

/// Gives a table that is empty its columns: figure, value, limit, verdict.
void MakeFigureTable(QTableWidget& table);

/// Shows figures; only what has changed is touched.
void ShowFigures(QTableWidget& table, std::span<const measure::NamedFigure> figures,
                 const measure::Judgement& judgement);

/// Makes the columns as wide as they have to be. Not with every outcome: columns that change their
/// widths cannot be read.
void FitFigureColumns(QTableWidget& table);

}  // namespace wavo

// Reports as files: PDF, and the parts that their JSON forms share.
#pragma once

#include <QPainter>
#include <QString>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "measure/verdict.h"
#include "report/json_writer.h"

namespace wavo::report {

struct ReportHeader;

/// Writes pages of A4; `paint` is called for each, counted from 1. False when the file cannot be
/// written.
bool WritePdf(const QString& path, const QString& title, int pages,
              const std::function<void(QPainter&, int)>& paint);

void WriteHeaderJson(JsonWriter& json, const ReportHeader& header, std::size_t lines,
                     double cycle_time);
void WriteFiguresJson(JsonWriter& json, std::span<const measure::NamedFigure> figures,
                      const measure::Judgement& judgement);
void WriteNotesJson(JsonWriter& json, const std::vector<std::string>& notes,
                    const measure::Judgement& judgement);

/// 0 pass, 1 fail, 3 could not be evaluated.
int ExitCodeOf(measure::Verdict verdict);

}  // namespace wavo::report

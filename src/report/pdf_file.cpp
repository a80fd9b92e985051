#include "report/pdf_file.h"

#include <QFile>
#include <QPageSize>
#include <QPdfWriter>
#include <algorithm>

#include "report/circle_report.h"
#include "support/file_name.h"

namespace wavo::report {

namespace {

constexpr int kDotsPerInch = 1200;

}  // namespace

bool WritePdf(const QString& path, const QString& title, int pages,
              const std::function<void(QPainter&, int)>& paint) {
    QFile file(path);
    if (!IsFileName(path.toStdString()) || !file.open(QIODevice::WriteOnly)) {
        return false;
    }
    {
        QPdfWriter writer(&file);
        writer.setTitle(title);
        writer.setCreator(QStringLiteral("Wavo"));
        writer.setResolution(kDotsPerInch);
        writer.setPageSize(QPageSize(QPageSize::A4));
        writer.setPageMargins(QMarginsF(0.0, 0.0, 0.0, 0.0));
        QPainter painter(&writer);
        for (int page = 1; page <= pages; ++page) {
            if (page > 1) {
                writer.newPage();
            }
            paint(painter, page);
        }
        if (!painter.end()) {
            return false;
        }
    }
    return file.flush() && file.error() == QFileDevice::NoError;
}

void WriteHeaderJson(JsonWriter& json, const ReportHeader& header, std::size_t lines,
                     double cycle_time) {
    json.Text("machine", header.machine.toStdString());
    json.Text("program", header.program.toStdString());
    json.Text("date", header.date.toStdString());
    json.Text("file", header.file.toStdString());
    json.Text("made_by", header.made_by.toStdString());
    json.Number("lines", static_cast<double>(lines));
    json.Number("cycle_time_s", cycle_time);
}

void WriteFiguresJson(JsonWriter& json, std::span<const measure::NamedFigure> figures,
                      const measure::Judgement& judgement) {
    json.BeginArray("figures");
    for (std::size_t i = 0; i < figures.size(); ++i) {
        const measure::NamedFigure& figure = figures[i];
        json.BeginObject();
        json.Text("key", figure.key);
        json.Text("symbol", figure.symbol);
        json.Text("name", figure.name);
        json.Text("unit", figure.unit);
        json.Value("value", figure.figure);
        if (!figure.figure) {
            json.Text("reason", figure.figure.reason);
        }
        if (figure.error > 0.0) {
            json.Number("standard_error", figure.error);
        }
        const auto judged = std::ranges::find(judgement.judged, i, &measure::Judged::figure);
        if (judged != judgement.judged.end()) {
            json.BeginObject("limit");
            if (judged->limit.least) {
                json.Number("least", *judged->limit.least);
            }
            if (judged->limit.most) {
                json.Number("most", *judged->limit.most);
            }
            json.EndObject();
            json.Text("verdict", measure::TextOf(judged->verdict));
        }
        json.EndObject();
    }
    json.EndArray();
}

void WriteNotesJson(JsonWriter& json, const std::vector<std::string>& notes,
                    const measure::Judgement& judgement) {
    json.BeginArray("notes");
    for (const std::string& note : notes) {
        json.Text("", note);
    }
    for (const std::string& key : judgement.unknown) {
        json.Text("", "there is a limit on \"" + key + "\", but no such figure");
    }
    json.EndArray();
}

int ExitCodeOf(measure::Verdict verdict) {
    switch (verdict) {
        case measure::Verdict::kPass:
            return 0;
        case measure::Verdict::kFail:
            return 1;
        case measure::Verdict::kNotTold:
            return 3;
    }
    return 3;
}

}  // namespace wavo::report

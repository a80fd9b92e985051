#include "graph/values/stream_rows.h"

#include <algorithm>
#include <limits>
#include <span>

#include "graph/values/missing_value.h"

namespace wavo {

namespace {

std::int64_t EndOf(std::int64_t line, std::uint64_t count) {
    return line + static_cast<std::int64_t>(count);
}

/// The part of `part` that lies in the rows from `first` on; without samples when there is none.
RowPart Within(const RowPart& part, std::uint64_t first, std::uint64_t count) {
    const std::uint64_t begin = std::max(part.row, first);
    const std::uint64_t end = std::min(part.row + part.samples.count, first + count);
    return begin < end ? RowPart{begin, {part.samples.position + (begin - part.row), end - begin}}
                       : RowPart{};
}

}  // namespace

StreamRows::StreamRows(const std::vector<const GraphValue*>& streams) {
    for (const GraphValue* value : streams) {
        m_streams.push_back({value, 0, {}, {}});
    }
    FindLater();
    FindRows();
    const std::int64_t origin = Origin();
    for (Stream& stream : m_streams) {
        if (stream.value == nullptr) {
            continue;
        }
        stream.held = ToParts(stream, RunsOf(stream));
        if (stream.value->DerivationOrder() >= 1) {
            const SampleRing& ring = stream.value->Values();
            const LineLog& lines = stream.value->Lines();
            stream.underived = ToParts(
                stream,
                lines.UnderivedRuns(ring.FirstSequence(), ring.Appended(),
                                    static_cast<std::uint64_t>(stream.value->DerivationOrder()),
                                    origin < lines.FirstLine() + stream.later));
        }
    }
}

void StreamRows::FindLater() {
    m_told = std::all_of(m_streams.begin(), m_streams.end(), [](const Stream& stream) {
        return stream.value == nullptr || stream.value->Values().Size() == 0 ||
               stream.value->Lines().IsTold();
    });
    for (Stream& stream : m_streams) {
        if (!m_told && stream.value != nullptr) {
            stream.later = -stream.value->Lines().LineOf(stream.value->Values().Appended());
        }
    }
}

std::vector<LineLog::Run> StreamRows::RunsOf(const Stream& stream) {
    const SampleRing& ring = stream.value->Values();
    return stream.value->Lines().Runs(ring.FirstSequence(), ring.Appended());
}

void StreamRows::FindRows() {
    std::vector<LineLog::Run> sorted;
    for (const Stream& stream : m_streams) {
        if (stream.value != nullptr) {
            for (LineLog::Run run : RunsOf(stream)) {
                run.line += stream.later;
                sorted.push_back(run);
            }
        }
    }
    std::sort(sorted.begin(), sorted.end(),
              [](const LineLog::Run& a, const LineLog::Run& b) { return a.line < b.line; });
    for (const LineLog::Run& run : sorted) {
        const std::int64_t end = EndOf(run.line, run.count);
        if (m_lines.empty() || run.line > EndOf(m_lines.back().line, m_lines.back().count)) {
            m_lines.push_back({run.line, run.count, m_count});
            m_count += run.count;
        } else if (end > EndOf(m_lines.back().line, m_lines.back().count)) {
            const auto count = static_cast<std::uint64_t>(end - m_lines.back().line);
            m_count += count - m_lines.back().count;
            m_lines.back().count = count;
        }
    }
}

std::uint64_t StreamRows::RowOf(std::int64_t line) const {
    for (const Lines& lines : m_lines) {
        if (line < EndOf(lines.line, lines.count)) {
            return lines.row +
                   static_cast<std::uint64_t>(std::max<std::int64_t>(0, line - lines.line));
        }
    }
    return m_count;
}

std::vector<RowPart> StreamRows::ToParts(const Stream& stream,
                                         const std::vector<LineLog::Run>& runs) const {
    std::vector<RowPart> parts;
    for (const LineLog::Run& run : runs) {
        const std::uint64_t position = run.sequence - stream.value->Values().FirstSequence();
        parts.push_back({RowOf(run.line + stream.later), {position, run.count}});
    }
    return parts;
}

std::vector<LineLog::Run> StreamRows::LinesOf(std::uint64_t first, std::uint64_t count) const {
    std::vector<LineLog::Run> runs;
    for (const Lines& lines : m_lines) {
        const RowPart rows = Within({lines.row, {0, lines.count}}, first, count);
        if (rows.samples.count != 0) {
            runs.push_back({rows.row - first,
                            lines.line + static_cast<std::int64_t>(rows.samples.position),
                            rows.samples.count});
        }
    }
    return runs;
}

std::int64_t StreamRows::Origin() const {
    std::int64_t origin = std::numeric_limits<std::int64_t>::max();
    for (const Stream& stream : m_streams) {
        if (stream.value != nullptr && stream.value->Values().Size() > 0) {
            origin = std::min(origin, stream.value->Lines().FirstLine() + stream.later);
        }
    }
    return origin;
}

const GraphValue* StreamRows::Any() const {
    const auto found = std::find_if(m_streams.begin(), m_streams.end(),
                                    [](const Stream& stream) { return stream.value != nullptr; });
    return found == m_streams.end() ? nullptr : found->value;
}

bool StreamRows::AreEven() const {
    return std::all_of(m_streams.begin(), m_streams.end(), [this](const Stream& stream) {
        return stream.value == nullptr || stream.value->Values().Size() == m_count;
    });
}

std::uint64_t StreamRows::CountOfSpan(double span) const {
    const GraphValue* const any = Any();
    if (any == nullptr) {
        return 0;
    }
    std::uint64_t count = 0;
    for (const Stream& stream : m_streams) {
        if (stream.value != nullptr) {
            count = std::max(count, stream.value->CountOfSpan(span));
        }
    }
    if (AreEven()) {
        return count;
    }
    // Together the streams may reach back further than each of them.
    const double rows = span / any->CycleTime();
    return rows >= static_cast<double>(m_count)
               ? m_count
               : std::min(m_count, std::max(count, static_cast<std::uint64_t>(rows)));
}

std::uint64_t StreamRows::FirstNew() const {
    std::uint64_t first = m_count;
    for (const Stream& stream : m_streams) {
        if (stream.value != nullptr && stream.value->NewCount() != 0) {
            const std::uint64_t sequence =
                std::max(stream.value->FirstNewSequence(), stream.value->Values().FirstSequence());
            first = std::min(first, RowOf(stream.value->Lines().LineOf(sequence) + stream.later));
        }
    }
    return first;
}

bool StreamRows::NewValuesAreEven() const {
    const GraphValue* const any = Any();
    if (any == nullptr || !m_told) {
        return true;
    }
    const std::uint64_t count = any->NewCount();
    const std::int64_t line = any->Lines().LineOf(any->FirstNewSequence());
    return std::all_of(m_streams.begin(), m_streams.end(), [&](const Stream& stream) {
        if (stream.value == nullptr) {
            return true;
        }
        if (stream.value->NewCount() != count) {
            return false;
        }
        const std::uint64_t sequence = stream.value->FirstNewSequence();
        const LineLog& lines = stream.value->Lines();
        return count == 0 || (lines.LineOf(sequence) == line &&
                              lines.Runs(sequence, sequence + count).size() == 1);
    });
}

std::int64_t StreamRows::FirstNewLine(const Stream& stream) {
    return stream.value->Lines().LineOf(stream.value->FirstNewSequence()) + stream.later;
}

double StreamRows::StartOfNew() const {
    const Stream* first = nullptr;
    for (const Stream& stream : m_streams) {
        if (stream.value != nullptr && stream.value->NewCount() != 0 &&
            (first == nullptr || FirstNewLine(stream) < FirstNewLine(*first))) {
            first = &stream;
        }
    }
    return first == nullptr
               ? 0.0
               : static_cast<double>(FirstNewLine(*first) - Origin()) * first->value->CycleTime();
}

std::uint64_t StreamRows::FirstOfAll() const {
    std::uint64_t first = 0;
    for (const Stream& stream : m_streams) {
        if (stream.value != nullptr) {
            first = std::max(first, stream.held.empty() ? m_count : stream.held.front().row);
        }
    }
    return first;
}

void StreamRows::Copy(std::size_t stream, std::uint64_t first, std::uint64_t count,
                      std::vector<double>& out) const {
    const Stream& of = m_streams[stream];
    out.clear();
    out.reserve(static_cast<std::size_t>(count));
    const auto put = [&out](std::span<const double> samples) {
        out.insert(out.end(), samples.begin(), samples.end());
    };
    for (const RowPart& part : of.held) {
        const RowPart wanted = Within(part, first, count);
        if (wanted.samples.count == 0) {
            continue;
        }
        out.resize(static_cast<std::size_t>(wanted.row - first), NoSample());
        const SampleRing::Parts samples =
            of.value->Values().Range(static_cast<std::size_t>(wanted.samples.position),
                                     static_cast<std::size_t>(wanted.samples.count));
        put(samples.first);
        put(samples.second);
    }
    out.resize(static_cast<std::size_t>(count), NoSample());
}

SampleOrigin StreamRows::OriginOf(std::size_t stream, std::uint64_t first,
                                  std::uint64_t count) const {
    const std::vector<RowPart> parts = Parts(stream, first, count);
    if (parts.size() != 1 || parts.front().samples.count != count) {
        return {};
    }
    const SampleBuffer& buffer = m_streams[stream].value->Values();
    return {&buffer, buffer.FirstSequence() + parts.front().samples.position};
}

std::vector<SampleStretch> StreamRows::Underived(std::size_t stream, std::uint64_t first,
                                                 std::uint64_t count) const {
    std::vector<SampleStretch> stretches;
    for (const RowPart& part : m_streams[stream].underived) {
        const RowPart wanted = Within(part, first, count);
        if (wanted.samples.count != 0) {
            stretches.push_back({wanted.row - first, wanted.samples.count});
        }
    }
    return stretches;
}

std::vector<RowPart> StreamRows::Parts(std::size_t stream, std::uint64_t first,
                                       std::uint64_t count) const {
    std::vector<RowPart> parts;
    for (const RowPart& part : m_streams[stream].held) {
        RowPart rest = Within(part, first, count);
        const auto take_up_to = [&](std::uint64_t row) {
            if (row > rest.row) {
                parts.push_back({rest.row - first, {rest.samples.position, row - rest.row}});
            }
        };
        const auto go_on_at = [&](std::uint64_t row) {
            const std::uint64_t skipped = std::min(row - rest.row, rest.samples.count);
            rest = {row, {rest.samples.position + skipped, rest.samples.count - skipped}};
        };
        for (const RowPart& underived : m_streams[stream].underived) {
            const RowPart cut = Within(underived, rest.row, rest.samples.count);
            if (cut.samples.count != 0) {
                take_up_to(cut.row);
                go_on_at(cut.row + cut.samples.count);
            }
        }
        take_up_to(rest.row + rest.samples.count);
    }
    return parts;
}

}  // namespace wavo

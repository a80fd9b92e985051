#include "ui/shell/command_line.h"

#include <QCommandLineParser>
#include <QStringList>
#include <algorithm>
#include <array>

#include "tables/table_preview.h"

namespace wavo {

namespace {

constexpr int kWrongArguments = 2;

/// Options that the toolkit takes for itself when it starts, written with one "-" or with two.
constexpr std::array kToolkitFlags{"reverse", "widgetcount", "nograb", "dograb"};
constexpr std::array kToolkitOptions{// the argument behind is their value
                                     "platform",
                                     "platformpluginpath",
                                     "platformtheme",
                                     "plugin",
                                     "qwindowgeometry",
                                     "geometry",
                                     "qwindowtitle",
                                     "title",
                                     "name",
                                     "qwindowicon",
                                     "icon",
                                     "display",
                                     "session",
                                     "style",
                                     "stylesheet"};

constexpr std::array kRecordingNames{".mcap", ".csv", ".csv.gz"};

/// The option that an argument names, without what begins it and without "=value"; empty for none.
QString OptionName(const QString& argument) {
    const int dashes = argument.startsWith(QLatin1String("--")) ? 2
                       : argument.startsWith(u'-')              ? 1
                                                                : 0;
    return dashes == 0 ? QString() : argument.mid(dashes).section(u'=', 0, 0);
}

bool IsOneOf(const auto& names, const QString& name) {
    return std::any_of(names.begin(), names.end(),
                       [&name](const char* known) { return name == QLatin1String(known); });
}

QStringList WithoutToolkitOptions(const std::vector<std::string>& arguments) {
    QStringList left{QStringLiteral("wavo")};  // the parser skips the program's name
    for (std::size_t index = 0; index < arguments.size(); ++index) {
        const QString argument = QString::fromStdString(arguments[index]);
        const QString name = OptionName(argument);
        if (IsOneOf(kToolkitOptions, name)) {
            index += argument.contains(u'=') ? 0 : 1;
        } else if (!IsOneOf(kToolkitFlags, name)) {
            left << argument;
        }
    }
    return left;
}

/// A file of this name is a recording, or is made one; else it is a graph file.
bool IsRecordingName(const QString& name) {
    return std::ranges::any_of(kRecordingNames, [&name](const char* extension) {
        return name.endsWith(QLatin1String(extension), Qt::CaseInsensitive);
    });
}

LastWords Refusal(const QString& why) {
    return {QStringLiteral("wavo: ") + why + u'\n', kWrongArguments};
}

/// The first line of the parser's text would name the program by its path.
QString HelpText(const QCommandLineParser& parser) {
    const QString text = parser.helpText();
    return QStringLiteral("Usage: wavo [options] [recording.mcap] [graphs.ini]") +
           text.mid(text.indexOf(u'\n'));
}

std::optional<double> CycleTime(const QCommandLineParser& parser, const QCommandLineOption& cycle) {
    bool is_number = false;
    const double seconds = parser.value(cycle).toDouble(&is_number);
    return is_number && tables::IsCycleTime(seconds) ? std::optional(seconds) : std::nullopt;
}

}  // namespace

CommandLine ReadCommandLine(const std::vector<std::string>& arguments) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Live signal scope for machine tools: shows the axes of the master process as graphs."));
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Show this text and end."));
    const QCommandLineOption version({QStringLiteral("v"), QStringLiteral("version")},
                                     QStringLiteral("Show the version and end."));
    const QCommandLineOption screenshot(
        QStringLiteral("screenshot"),
        QStringLiteral("Save a picture of the window to <file> and end."), QStringLiteral("file"));
    const QCommandLineOption after_lines(
        QStringLiteral("after-lines"),
        QStringLiteral("With --screenshot: wait until <lines> lines were shown (default 1000)."),
        QStringLiteral("lines"), QStringLiteral("1000"));
    const QCommandLineOption cycle(
        QStringLiteral("cycle"),
        QStringLiteral("Of a table: its lines are <seconds> apart. It is then not asked for."),
        QStringLiteral("seconds"));
    parser.addOptions({help, version, screenshot, after_lines, cycle});
    parser.addPositionalArgument(
        QStringLiteral("recording.mcap"),
        QStringLiteral(
            "Recording or table (.csv, .csv.gz) to look at in place of the live values."),
        QStringLiteral("[recording.mcap]"));
    parser.addPositionalArgument(QStringLiteral("graphs.ini"),
                                 QStringLiteral("Graph file to open (default: the settings file)."),
                                 QStringLiteral("[graphs.ini]"));
    const bool understood = parser.parse(WithoutToolkitOptions(arguments));
    CommandLine line;
    if (parser.isSet(help)) {
        line.last_words = LastWords{HelpText(parser)};
        return line;
    }
    if (parser.isSet(version)) {
        line.last_words = LastWords{QStringLiteral("Wavo " WAVO_VERSION "\n")};
        return line;
    }
    bool is_number = false;
    QStringList files = parser.positionalArguments();
    const bool has_recording = !files.isEmpty() && IsRecordingName(files[0]);
    const QString recording = has_recording ? files.takeFirst() : QString();
    line.options = {parser.value(screenshot), parser.value(after_lines).toULongLong(&is_number),
                    recording, files.value(0), CycleTime(parser, cycle)};
    if (!understood) {
        line.last_words = Refusal(parser.errorText());
    } else if (!is_number) {
        line.last_words = Refusal(QStringLiteral("--after-lines needs a number"));
    } else if (parser.isSet(screenshot) && line.options.screenshot.isEmpty()) {
        line.last_words = Refusal(QStringLiteral("--screenshot needs the name of a file"));
    } else if (parser.isSet(cycle) && !line.options.cycle_time) {
        line.last_words = Refusal(QStringLiteral("--cycle needs a time in seconds"));
    } else if (files.size() > 1) {
        line.last_words = Refusal(QStringLiteral("unexpected argument: ") + files[1]);
    }
    return line;
}

}  // namespace wavo
